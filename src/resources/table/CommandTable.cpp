// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/CommandTable.h"

#include "resources/changes/ChangeQuestion.h"

namespace tidewright {

QStringList CommandTable::commandLine(const QStringList &words) const
{
    const WindowState &window = kubeSplitViewController();
    QStringList line{QStringLiteral("kubectl")};
    line += words;
    line += contextArgument(window.currentContext());
    if (kind().namespaced) {
        line += namespaceArgument(window.currentNamespace());
    }
    return line;
}

void CommandTable::runOnRows(const RowCommand &command)
{
    if (command.names.isEmpty() || !canChange(command.names, command.notDone)) {
        return;
    }
    const ChangePlace place(kubeSplitViewController());
    const Answered answered = [place, command, done = reloadWhenDone()](bool confirmed) {
        if (confirmed) {
            runChange(place, ChangeCommands{command.lines}, command.notDone, done);
        }
    };
    QWidget *details = confirmationDetails(place.text(kind()));
    if (command.isAlwaysAsked) {
        confirmChange(this, place, command.title, command.question, command.button, details, answered);
    } else {
        confirmWhereProtected(
            this, place.key(), command.title, command.question, command.button, details, answered);
    }
}

QString CommandTable::onlyChosen() const
{
    const QStringList names = chosenNames();
    return names.size() == 1 ? names.first() : QString();
}

QString CommandTable::nounFor(const QStringList &names) const
{
    if (names.size() == 1) {
        return QStringLiteral("the %1 \"%2\"").arg(kind().humanReadableResourceName, names.first());
    }
    return QStringLiteral("%1 %2").arg(names.size()).arg(kind().tableName.toLower());
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
