// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/Settling.h"

#include "platform/threads/MainQueue.h"

#include <utility>

namespace tidewright {

namespace {

constexpr auto lookInterval = std::chrono::seconds(20);

} // namespace

Settling::Settling(const KubeCtl &kubeCtl, const ShownPlace &shown, PlaceSetting &setting)
    : m_kubeCtl(kubeCtl)
    , m_shown(shown)
    , m_setting(setting)
    , m_watch(kubeCtl)
{
    connect(&setting, &PlaceSetting::namespaceSet, this, &Settling::answerWaiting);
    m_timer.callOnTimeout(this, &Settling::look);
    m_timer.start(lookInterval);
}

Settling::~Settling()
{
    for (const auto &completion : m_waiting) {
        mainQueue().post([completion] {
            completion(QStringLiteral("its window was closed before it showed the context and namespace."));
        });
    }
}

void Settling::begin()
{
    m_displacement.clear();
    m_isLooking = false;
    m_watch.begin();
    answerWaiting();
}

void Settling::look()
{
    if (m_shown.context.isEmpty() || m_shown.isBeingChosen) {
        return;
    }
    m_watch.look([self = QPointer(this)](const QString &change) {
        if (self && !self->m_shown.isBeingChosen) {
            self->setDisplacement(change);
        }
    });
}

void Settling::setDisplacement(const QString &sentence)
{
    if (std::exchange(m_displacement, sentence) != sentence) {
        Q_EMIT displacementChanged();
    }
}

void Settling::wait(Settled completion)
{
    m_waiting.push_back(std::move(completion));
    if (m_waiting.size() > 1) {
        return;
    }
    if (!whyNoPlace().isEmpty()) {
        answerWaiting();
        return;
    }
    m_isLooking = true; // also for whether what was wrong with the kubeconfig is mended
    m_watch.look([self = QPointer(this)](const QString &change) {
        if (self) {
            self->lookedBeforeCommand(change);
        }
    });
}

void Settling::lookedBeforeCommand(const QString &change)
{
    if (!std::exchange(m_isLooking, false)) {
        return; // the window is in another place by now
    }
    if (!m_shown.isBeingChosen) {
        setDisplacement(change);
    }
    if (obstacle().isEmpty() && !m_setting.isUnderWay() && !hasItsPlace()) {
        m_setting.setNamespace(m_shown.nameSpace); // once more
    }
    answerWaiting();
}

void Settling::answerWaiting()
{
    if ((m_setting.isUnderWay() && !m_shown.isBeingChosen) || m_isLooking) {
        return;
    }
    QString reason = obstacle();
    if (reason.isEmpty() && !hasItsPlace()) {
        reason = QStringLiteral("The window's namespace %1 could not be set.").arg(m_shown.nameSpace);
    }
    for (const auto &completion : std::exchange(m_waiting, {})) {
        completion(reason);
    }
}

QString Settling::obstacle() const
{
    const QString reason = whyNoPlace();
    return reason.isEmpty() ? m_displacement : reason;
}

QString Settling::whyNoPlace() const
{
    if (!m_kubeCtl.closedBecause.isEmpty()) {
        return m_kubeCtl.closedBecause;
    }
    if (m_shown.isBeingChosen && !m_shown.context.isEmpty()) {
        return QStringLiteral(
            "The window is switching to the context %1; its tables do not show that context yet.")
            .arg(m_shown.context);
    }
    if (m_shown.context.isEmpty() || m_shown.nameSpace.isEmpty()) {
        return QStringLiteral("No context and namespace are chosen yet.");
    }
    return {};
}

} // namespace tidewright
