// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/KubeCtl.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <deque>
#include <memory>
#include <vector>

namespace tidewright {

/// Puts the changes that this process makes to kubeconfigs one after the other: two kubectl at once fail on
/// the file's lock, and the one that ends last need not be the one that was asked for last. A change that has
/// begun is not ended half-way (its lock would stay behind), except one that hangs. One for all windows; main
/// thread.
class KubeConfigWriter : public QObject
{
    Q_OBJECT
public:
    using Finished = std::function<void()>;
    using Task = std::function<void(Finished finished)>;
    using Done = std::function<void(bool success)>;

    /// How long a kubectl that has just been allowed to start may need until it has read the kubeconfig.
    explicit KubeConfigWriter(std::chrono::milliseconds readingTime = std::chrono::milliseconds(1500));

    /// Runs `task` once those before it have finished, at once when there are none. The task decides then
    /// what still needs to be done, and says when it is through. It is skipped when its owner is gone.
    void enqueue(QObject *owner, Task task);

    // The steps of a task. Completions come on the main thread, also after a failure, which the console
    // tells.
    void useContext(const KubeCtl &kubeCtl, const QString &name, Done done);
    void setNamespace(const KubeCtl &kubeCtl, const QString &name, Done done);

    /// Tells one state of the kubeconfig at that path (empty: the default one) from another.
    static QByteArray fileState(const QString &configPath);
    /// A kubectl that was started in the state `before` has read that current context.
    void observe(const QString &configPath, const QByteArray &before, const QString &context);
    /// Whether the kubeconfig at that path is known to have that current context, and that namespace in it:
    /// they were chosen or read here, and no other program has changed the file since.
    bool hasContext(const QString &configPath, const QString &context) const;
    bool hasNamespace(const QString &configPath, const QString &context, const QString &nameSpace) const;

    /// Keeps the kubeconfigs as they are until the result is let go, but no longer than the reading time: a
    /// kubectl that goes by their current context is about to read them.
    [[nodiscard]] std::shared_ptr<void> keepStill();
    /// For the end of the application: waits for a change under way, which would leave its lock behind
    /// otherwise.
    void finish(std::chrono::milliseconds limit) const;

private:
    struct Entry
    {
        QPointer<QObject> owner;
        Task task;
    };

    /// What this process wrote last, and how it left the file.
    struct Written
    {
        QString path;
        QByteArray state;
        QString context;
        std::optional<QString> nameSpace = {};
    };

    bool isUntouched(const QString &configPath) const;
    void runNext();
    void afterStillness(std::function<void()> step);
    void takeDelayedStep();
    void endHanging(const std::shared_ptr<Shell> &shell, const QString &what);

    const std::chrono::milliseconds m_readingTime;
    std::deque<Entry> m_waiting;
    bool m_busy = false;
    std::vector<std::weak_ptr<QElapsedTimer>> m_stillness;
    std::function<void()> m_delayedStep;
    QTimer m_delay;
    std::weak_ptr<Shell> m_running;
    std::optional<Written> m_written;
};

} // namespace tidewright
