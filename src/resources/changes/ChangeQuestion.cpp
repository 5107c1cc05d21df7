// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/ChangeQuestion.h"

#include <QLocale>
#include <QWidget>

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

QString objectsText(
    const ChangePlace &place, const ResourceKind &kind, const ObjectNames &objects, const QString &note)
{
    const auto groups = byNamespace(objects);
    const bool hasOneGroup = groups.size() == 1;
    const qsizetype namesShown = hasOneGroup ? 10 : 3;
    QStringList lines;
    for (const auto &[nameSpace, names] : groups) {
        if (objects.size() == 1) {
            break;
        }
        QStringList some = names.first(qMin(namesShown, names.size()));
        if (names.size() > namesShown) {
            some.append(QStringLiteral("and %1 more").arg(QLocale().toString(names.size() - namesShown)));
        }
        if (hasOneGroup) {
            lines += some;
        } else {
            lines.append(QStringLiteral("Namespace %1: ").arg(nameSpace) + some.join(QLatin1String(", ")));
        }
    }
    if (!lines.isEmpty()) {
        lines.append(QString());
    }
    if (!note.isEmpty()) {
        lines += {note, QString()};
    }
    lines.append(place.text(kind, hasOneGroup ? groups.front().first : QString()));
    return lines.join(QLatin1Char('\n'));
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
