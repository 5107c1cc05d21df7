// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/Console.h"

#include "platform/threads/MainQueue.h"

namespace tidewright {

namespace {

std::function<Console *()> &consoleLookup()
{
    static std::function<Console *()> lookup;
    return lookup;
}

} // namespace

void Console::begin(const QString &title, const Stop &stop)
{
    m_scriptsRunning.append(title);
    if (stop) {
        m_stoppable.emplace_back(title, stop);
    }
    updateScriptState();
}

void Console::end(const QString &title, const Stop &stop)
{
    m_scriptsRunning.removeOne(title);
    std::erase_if(m_stoppable, [&stop](const auto &entry) { return entry.second == stop; });
    updateScriptState();
}

QStringList Console::stoppableScripts() const
{
    QStringList titles;
    for (const auto &[title, stop] : m_stoppable) {
        titles.append(title);
    }
    return titles;
}

void Console::stopScripts()
{
    const auto stoppable = m_stoppable; // each may end at once
    for (const auto &[title, stop] : stoppable) {
        (*stop)();
    }
}

ConsoleError makeConsoleError(const QString &description)
{
    return {QStringLiteral("Console"), -1, description};
}

Console *mainConsole()
{
    return consoleLookup() ? consoleLookup()() : nullptr;
}

void setMainConsoleLookup(std::function<Console *()> lookup)
{
    consoleLookup() = std::move(lookup);
}

void postConsoleEntry(Console *console, const QString &command, const QString &response,
    const std::optional<ConsoleError> &error, const CommandLine &line)
{
    Console *target = console ? console : mainConsole();
    if (!target) {
        return;
    }
    if (line.arguments.isEmpty()) {
        target->addEntry(command, response, error);
    } else {
        target->addCommandEntry(line, command, response, error);
    }
}

void postConsoleError(const QString &description)
{
    mainQueue().post(
        [description] { postConsoleEntry(nullptr, QString(), QString(), makeConsoleError(description)); });
}

} // namespace tidewright
