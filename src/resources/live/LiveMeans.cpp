// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/LiveMeans.h"

#include "core/running/ApplicationRecord.h"
#include "platform/threads/MainQueue.h"

#include <QTimer>

#include <utility>

namespace tidewright {

LiveMeans liveMeans(std::function<std::shared_ptr<Shell>()> makeShell)
{
    LiveMeans means;
    means.run = [makeShell = std::move(makeShell)](const QStringList &arguments, Shell::PieceHandler piece,
                    Shell::EndHandler ended) -> std::shared_ptr<void> {
        std::shared_ptr<Shell> shell = makeShell();
        shell->runStreaming(QStringList(kubectlPath()) + arguments, std::move(piece), std::move(ended));
        return shell;
    };
    means.now = [] {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
    };
    means.date = [] { return QDateTime::currentDateTime(); };
    means.later = [](std::chrono::milliseconds delay, std::function<void()> callback) {
        QTimer::singleShot(delay, Qt::PreciseTimer, &mainQueue(), std::move(callback));
    };
    return means;
}

} // namespace tidewright
