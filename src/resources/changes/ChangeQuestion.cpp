// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/ChangeQuestion.h"

#include "core/CommandGate.h"
#include "resources/changes/Confirmation.h"

namespace tidewright {

QString changeObstacle(const WindowState &window)
{
    return readOnlyReason(shownContext(window));
}

ContextKey shownContext(const WindowState &window)
{
    return {window.kubeConfigPath(), window.currentContext()};
}

QString toBeTypedIn(const ContextKey &context)
{
    return ContextPolicies::policy(context).access == ContextAccess::Protected ? context.name : QString();
}

QString editTitle(const WindowState &window)
{
    return changeObstacle(window).isEmpty() ? QStringLiteral("Edit Configuration")
                                            : QStringLiteral("View Configuration");
}

void confirmChange(QWidget *view, const ChangePlace &place, const QString &title, const QString &message,
    const QString &firstButton, QWidget *details, Answered answered)
{
    showConfirmation(view, title, message, firstButton, QStringLiteral("Cancel"), details,
        std::move(answered), toBeTypedIn(place.key()));
}

void confirmWhereProtected(QWidget *view, const ContextKey &context, const QString &title,
    const QString &message, const QString &firstButton, QWidget *details, Answered answered)
{
    const QString name = toBeTypedIn(context);
    if (name.isEmpty()) {
        delete details;
        answered(true);
        return;
    }
    showConfirmation(
        view, title, message, firstButton, QStringLiteral("Cancel"), details, std::move(answered), name);
}

} // namespace tidewright
