// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/Console.h"

namespace tidewright {

/// Tells a console that a script runs, from now until `end`. Any thread; the console, which may be gone by
/// then, is told on the main thread, in the order of the calls.
class RunningScript
{
public:
    /// With `stop`, the console's user can end it.
    RunningScript(QPointer<Console> console, QString title, Console::Stop stop = {});

    /// The first script of that title is no longer running.
    void end() const;
    /// The same, and waits until the console knows. Not on the main thread.
    void endAndWait() const;

private:
    QPointer<Console> m_console;
    QString m_title;
    Console::Stop m_stop;
};

} // namespace tidewright
