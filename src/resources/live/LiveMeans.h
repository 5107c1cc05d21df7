// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/Shell.h"

#include <QDateTime>

#include <chrono>

namespace tidewright {

/// What a live stream needs of the world; a test gives it another one. Called on the main thread.
struct LiveMeans
{
    /// Starts a child with the arguments after "kubectl". The handlers are those of `Shell::runStreaming`.
    /// Letting the result go ends the child, without waiting for it.
    std::function<std::shared_ptr<void>(
        const QStringList &arguments, Shell::PieceHandler piece, Shell::EndHandler ended)>
        run;
    /// A clock that never goes back.
    std::function<std::chrono::milliseconds()> now;
    /// The day and the time for people.
    std::function<QDateTime()> date;
    /// Calls back on the main thread after this time.
    std::function<void(std::chrono::milliseconds delay, std::function<void()> callback)> later;
};

/// The real ones. `makeShell` gives each child a shell that acts in the window's place
/// (`KubeCtl::makeShell`).
LiveMeans liveMeans(std::function<std::shared_ptr<Shell>()> makeShell);

} // namespace tidewright
