// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/RowDeletion.h"

#include "resources/changes/ChangeQuestion.h"

#include <QLocale>

#include <algorithm>

namespace tidewright {

namespace {

const auto nothingDeleted = QStringLiteral("Nothing was deleted");

/// Where the objects are, and which when there are several: the first few by name.
QWidget *detailsOf(const QStringList &names, const ChangePlace &place, const ResourceKind &kind)
{
    constexpr qsizetype namesShown = 10;
    QString text;
    if (names.size() > 1) {
        text = names.first(qMin(namesShown, names.size())).join(QLatin1Char('\n'));
        if (names.size() > namesShown) {
            text += QStringLiteral("\nand %1 more").arg(QLocale().toString(names.size() - namesShown));
        }
        text += QLatin1String("\n\n");
    }
    if (!kind.deletionWarning.isEmpty()) {
        text += kind.deletionWarning + QLatin1String("\n\n");
    }
    return confirmationDetails(text + place.text(kind));
}

/// kubectl deletes the names of a command line one by one. The kernel takes 128 KiB of arguments and
/// environment from everybody, and more only where the limit of the stack allows it; half of that leaves room
/// for the environment, and is a line that a console, a log and an audit can still hold.
std::vector<QStringList> commandsFor(const QStringList &command, const QStringList &names)
{
    constexpr qsizetype longest = 64 * 1024;
    constexpr qsizetype pointer = 8; // which the kernel counts too
    std::vector<QStringList> lines;
    qsizetype room = 0;
    for (const QString &name : names) {
        const qsizetype size = name.toUtf8().size() + 1 + pointer;
        if (lines.empty() || size > room) {
            lines.push_back(command);
            room = longest;
        }
        lines.back().append(name);
        room -= size;
    }
    return lines;
}

/// Objects that are gone already are no reason to leave the others. Anything else that fails once would fail
/// again and again.
bool wereOnlyGone(const ShellResult &result)
{
    const QStringList lines = result.error.value_or(QString()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return !lines.isEmpty() && std::all_of(lines.begin(), lines.end(), [](const QString &line) {
        return line.startsWith(QLatin1String("Error from server (NotFound): "));
    });
}

} // namespace

void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind, const QStringList &names,
    std::function<void()> finished)
{
    if (names.isEmpty()) {
        return;
    }
    QString reason = changeObstacle(window);
    if (reason.isEmpty()) {
        reason = whyNotByName(kind, names, window.currentNamespace());
    }
    if (!reason.isEmpty()) {
        refuseChange(window, nothingDeleted, reason);
        return;
    }
    const QString &noun = kind.humanReadableResourceName;
    const QString message = names.size() == 1
        ? QStringLiteral("Are you sure you want to delete the %1 \"%2\"?").arg(noun, names.first())
        : QStringLiteral("Are you sure you want to delete %1 %2?")
              .arg(names.size())
              .arg(kind.pluralNoun.isEmpty() ? noun + QLatin1Char('s') : kind.pluralNoun);
    const ChangePlace place(window);
    const QStringList command{QStringLiteral("kubectl"), QStringLiteral("delete"), kind.resourceName};
    confirmChange(&view, place, QStringLiteral("Confirm Deletion"), message, QStringLiteral("Delete"),
        detailsOf(names, place, kind),
        [place, lines = commandsFor(command, names), finished = std::move(finished)](bool confirmed) {
            if (confirmed) {
                runChange(place, ChangeCommands{lines, wereOnlyGone}, nothingDeleted, finished);
            }
        });
}

} // namespace tidewright
