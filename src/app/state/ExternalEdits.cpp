// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/ExternalEdits.h"

#include "core/CommandGate.h"
#include "external/EditFile.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ClusterChange.h"

namespace tidewright {

namespace {

const auto nothingEdited = QStringLiteral("Nothing was edited");

/// Every other outcome has its entry.
void tellUnexpected(const QPointer<Console> &console, const ShellResult &result)
{
    if (result.error && result.error->startsWith(QLatin1String("Unexpected error: "))) {
        postConsoleEntry(console, QString(), QString(), makeConsoleError(*result.error));
    }
}

} // namespace

ExternalEdits::ExternalEdits(WindowState &window)
    : m_window(window)
{
}

ExternalEdits::~ExternalEdits()
{
    for (const auto &weak : m_edits) {
        if (const auto edit = weak.lock()) {
            edit->cancel();
        }
    }
}

void ExternalEdits::start(const QStringList &arguments, std::function<void()> finished)
{
    m_window.whenSettled([this, arguments, finished = std::move(finished), place = ChangePlace(m_window)](
                             const QString &reason) {
        if (allowsStart(place, nothingEdited, reason)) {
            startNow(arguments, finished);
        } else if (place.window) {
            finished();
        }
    });
}

void ExternalEdits::startNow(const QStringList &arguments, std::function<void()> finished)
{
    const KubeConfigCopy copy = m_window.kubeCtl().makeCopy();
    if (!allows(m_window, nothingEdited, copy.problem)) {
        finished();
        return;
    }
    const QPointer<Console> console = m_window.console();
    makeEdit(copy.kubeConfig)
        ->runAsync(arguments, true, console,
            [finished = std::move(finished), console, view = copy.view](const ShellResult &result) {
                mainQueue().post([=] {
                    tellUnexpected(console, result);
                    finished();
                });
            });
}

std::shared_ptr<EditFile> ExternalEdits::makeEdit(const QString &kubeConfig)
{
    const auto edit = std::make_shared<EditFile>(qobject_cast<QWidget *>(m_window.parent()), kubeConfig);
    edit->showPreferences = [self = QPointer(this)] {
        if (self) {
            Q_EMIT self->preferencesRequested();
        }
    };
    edit->gate = [place = m_window.kubeCtl().startingPlace()](
                     const QStringList &words) { return gateReason(words, place); };
    std::erase_if(m_edits, [](const auto &ended) { return ended.expired(); });
    m_edits.push_back(edit);
    return edit;
}

} // namespace tidewright
