// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/CommandTable.h"

#include "resources/changes/ChangeQuestion.h"

namespace tidewright {

QStringList CommandTable::commandLine(const QStringList &words, const QString &nameSpace) const
{
    QStringList line{QStringLiteral("kubectl")};
    line += words;
    const QString context = kubeSplitViewController().currentContext();
    return line
        + (kind().namespaced ? placeArguments(context, nameSpace) : QStringList{contextArgument(context)});
}

std::vector<QStringList> CommandTable::commandLines(
    const QStringList &words, const QString &target, const ObjectNames &objects) const
{
    std::vector<QStringList> lines;
    for (const auto &[nameSpace, names] : byNamespace(objects)) {
        lines.push_back(commandLine(words, nameSpace));
        for (const QString &name : names) {
            lines.back().append(target + name);
        }
    }
    return lines;
}

void CommandTable::runOnRows(const RowCommand &command)
{
    if (command.objects.isEmpty() || !canChange(command.objects, command.notDone)) {
        return;
    }
    const ChangePlace place(kubeSplitViewController());
    const Answered answered = [place, command, done = reloadWhenDone()](bool confirmed) {
        if (confirmed) {
            runChange(place, ChangeCommands{command.lines}, command.notDone, done);
        }
    };
    const Question question{.title = command.title,
        .message = command.question,
        .yes = command.button,
        .accessory = confirmationDetails(objectsText(place, kind(), command.objects))};
    if (command.isAlwaysAsked) {
        confirmChange(this, place, question, answered);
    } else {
        confirmWhereProtected(this, place.key(), question, answered);
    }
}

std::optional<ObjectName> CommandTable::onlyChosen() const
{
    const ObjectNames objects = chosenObjects();
    return objects.size() == 1 ? std::optional(objects.first()) : std::nullopt;
}

QString CommandTable::nounFor(const ObjectNames &objects) const
{
    if (objects.size() == 1) {
        return QStringLiteral("the %1 \"%2\"").arg(kind().humanReadableResourceName, objects.first().name);
    }
    return QStringLiteral("%1 %2").arg(objects.size()).arg(kind().tableName.toLower());
}

std::function<void()> CommandTable::reloadWhenDone()
{
    return [self = QPointer(this)] {
        if (self) {
            self->reloadSoon();
        }
    };
}

} // namespace tidewright
