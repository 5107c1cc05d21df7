// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/AccessReview.h"

#include "platform/threads/MainQueue.h"

#include <utility>

namespace tidewright {

namespace {

constexpr int nicenessOfReview = 10;

} // namespace

AccessReview::AccessReview(const KubeCtl &kubeCtl, std::chrono::milliseconds lifetime)
    : m_kubeCtl(kubeCtl)
    , m_lifetime(lifetime)
{
}

AccessReview::~AccessReview()
{
    cancel();
}

void AccessReview::need(const QString &context, const QString &nameSpace)
{
    const auto known = m_answers.constFind(nameSpace);
    const bool isKnown = known != m_answers.cend() && !known->isYoung.hasExpired();
    const bool isAsked = m_shell && m_asked == nameSpace;
    if (context.isEmpty() || nameSpace.isEmpty() || nameSpace == allNamespaces || isKnown || isAsked) {
        return;
    }
    cancel();
    m_asked = nameSpace;
    m_shell = m_kubeCtl.makeShell();
    m_shell->niceness = nicenessOfReview;
    const QStringList arguments = QStringList{QStringLiteral("kubectl"), QStringLiteral("auth"),
                                      QStringLiteral("can-i"), QStringLiteral("--list")}
        + placeArguments(context, nameSpace);
    m_shell->runAsync(arguments, false, nullptr,
        onMain(QPointer(this),
            [nameSpace, request = m_request](AccessReview &review, const ShellResult &result) {
                if (request == review.m_request) {
                    review.answered(nameSpace, result);
                }
            }));
}

/// A list that may be incomplete comes with a warning: then nothing is known for sure.
void AccessReview::answered(const QString &nameSpace, const ShellResult &result)
{
    m_shell.reset();
    m_answers.insert(nameSpace,
        {result.hasSucceeded() ? AccessRules::read(result.output) : std::nullopt,
            QDeadlineTimer(m_lifetime)});
    Q_EMIT changed();
}

void AccessReview::cancel()
{
    ++m_request;
    if (const auto shell = std::exchange(m_shell, nullptr)) {
        shell->cancel();
    }
}

void AccessReview::forget()
{
    cancel();
    if (!std::exchange(m_answers, {}).isEmpty()) {
        Q_EMIT changed();
    }
}

bool AccessReview::mayDo(const Access &access, const QString &nameSpace) const
{
    const auto known = m_answers.constFind(nameSpace);
    return known == m_answers.cend() || !known->rules || known->rules->mayDo(access);
}

} // namespace tidewright
