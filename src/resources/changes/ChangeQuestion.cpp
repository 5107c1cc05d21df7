// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/ChangeQuestion.h"

namespace tidewright {

QString toBeTypedIn(const ContextKey &context)
{
    return ContextPolicies::policy(context).access == ContextAccess::Protected ? context.name : QString();
}

QString editTitle(const WindowState &window)
{
    return changeObstacle(window).isEmpty() ? QStringLiteral("Edit Configuration")
                                            : QStringLiteral("View Configuration");
}

void confirmChange(QWidget *view, const ChangePlace &place, Question question, Answered answered)
{
    question.toBeTyped = toBeTypedIn(place.key());
    showConfirmation(view, question, std::move(answered));
}

void confirmWhereProtected(
    QWidget *view, const ContextKey &context, const Question &question, const Answered &answered)
{
    if (toBeTypedIn(context).isEmpty()) {
        delete question.accessory;
        answered(true);
        return;
    }
    Question asked = question;
    asked.toBeTyped = toBeTypedIn(context);
    showConfirmation(view, asked, answered);
}

} // namespace tidewright
