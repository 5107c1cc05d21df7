// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/RowDeletion.h"

#include "resources/changes/ChangeQuestion.h"

#include <QHash>
#include <QLocale>

#include <algorithm>

namespace tidewright {

namespace {

const auto nothingDeleted = QStringLiteral("Nothing was deleted");

/// The names by namespace, in the order in which either was chosen.
using NamesByNamespace = std::vector<std::pair<QString, QStringList>>;

NamesByNamespace byNamespace(const ResourceKind &kind, const ObjectNames &objects)
{
    NamesByNamespace groups;
    QHash<QString, std::size_t> places;
    for (const ObjectName &object : objects) {
        const QString nameSpace = kind.namespaced ? object.nameSpace : QString();
        if (!places.contains(nameSpace)) {
            places.insert(nameSpace, groups.size());
            groups.emplace_back(nameSpace, QStringList());
        }
        groups[places.value(nameSpace)].second.append(object.name);
    }
    return groups;
}

/// Where the objects are, and which when there are several: the first few by name, under every namespace.
QWidget *detailsOf(const NamesByNamespace &groups, const ChangePlace &place, const ResourceKind &kind)
{
    constexpr qsizetype namesShown = 10;
    const bool hasOneGroup = groups.size() == 1;
    QStringList lines;
    for (const auto &[nameSpace, names] : groups) {
        if (hasOneGroup && names.size() == 1) {
            break;
        }
        if (!hasOneGroup) {
            lines.append(QStringLiteral("Namespace: ") + nameSpace);
        }
        const QString indent = hasOneGroup ? QString() : QStringLiteral("    ");
        for (const QString &name : names.first(qMin(namesShown, names.size()))) {
            lines.append(indent + name);
        }
        if (names.size() > namesShown) {
            lines.append(
                indent + QStringLiteral("and %1 more").arg(QLocale().toString(names.size() - namesShown)));
        }
    }
    if (!lines.isEmpty()) {
        lines.append(QString());
    }
    lines.append(place.text(kind, hasOneGroup ? groups.front().first : QString()));
    return confirmationDetails(lines.join(QLatin1Char('\n')));
}

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
    const ResourceKind &kind, const NamesByNamespace &groups, const ChangePlace &place)
{
    std::vector<QStringList> lines;
    for (const auto &[nameSpace, names] : groups) {
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
        : QStringLiteral("Are you sure you want to delete %1 %2s?").arg(objects.size()).arg(noun);
    const ChangePlace place(window);
    const NamesByNamespace groups = byNamespace(kind, objects);
    confirmChange(&view, place,
        {.title = QStringLiteral("Confirm Deletion"),
            .message = message,
            .yes = QStringLiteral("Delete"),
            .accessory = detailsOf(groups, place, kind)},
        [place, lines = commandsFor(kind, groups, place), finished = std::move(finished)](bool confirmed) {
            if (confirmed) {
                runChange(place, ChangeCommands{lines, wereOnlyGone}, nothingDeleted, finished);
            }
        });
}

} // namespace tidewright
