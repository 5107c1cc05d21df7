// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/RowDeletion.h"

#include "resources/changes/ChangeQuestion.h"

#include <algorithm>

namespace tidewright {

namespace {

const auto nothingDeleted = QStringLiteral("Nothing was deleted");

/// kubectl deletes the names of a command line one by one. The kernel takes 128 KiB of arguments and
/// environment from everybody, and more only where the limit of the stack allows it; half of that leaves room
/// for the environment, and is a line that a console, a log and an audit can still hold.
void addCommands(std::vector<QStringList> &lines, const QStringList &command, const QStringList &names)
{
    constexpr qsizetype longest = 64 * 1024;
    constexpr qsizetype pointer = 8; // which the kernel counts too
    qsizetype room = 0;
    for (const QString &name : names) {
        const qsizetype size = name.toUtf8().size() + 1 + pointer;
        if (size > room) {
            lines.push_back(command);
            room = longest;
        }
        lines.back().append(name);
        room -= size;
    }
}

/// They name a namespace only where the window shows all of them.
std::vector<QStringList> commandsFor(
    const ResourceKind &kind, const ObjectNames &objects, const ChangePlace &place)
{
    std::vector<QStringList> lines;
    for (const auto &[nameSpace, names] : byNamespace(objects)) {
        QStringList command{QStringLiteral("kubectl"), QStringLiteral("delete"), kind.resourceName};
        if (kind.namespaced && nameSpace != place.nameSpace) {
            command.append(namespaceArgument(nameSpace));
        }
        addCommands(lines, command, names);
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

void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind,
    const ObjectNames &objects, std::function<void()> finished)
{
    if (objects.isEmpty() || !allowsChange(window, kind, objects, nothingDeleted)) {
        return;
    }
    const QString &noun = kind.humanReadableResourceName;
    const QString message = objects.size() == 1
        ? QStringLiteral("Are you sure you want to delete the %1 \"%2\"?").arg(noun, objects.first().name)
        : QStringLiteral("Are you sure you want to delete %1 %2?")
              .arg(objects.size())
              .arg(kind.pluralNoun.isEmpty() ? noun + QLatin1Char('s') : kind.pluralNoun);
    const ChangePlace place(window);
    confirmChange(&view, place,
        {.title = QStringLiteral("Confirm Deletion"),
            .message = message,
            .yes = QStringLiteral("Delete"),
            .accessory = confirmationDetails(objectsText(place, kind, objects, kind.deletionWarning))},
        [place, lines = commandsFor(kind, objects, place), finished = std::move(finished)](bool confirmed) {
            if (confirmed) {
                runChange(place, ChangeCommands{lines, wereOnlyGone}, nothingDeleted, finished);
            }
        });
}

} // namespace tidewright
