// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/KubeCtl.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <chrono>
#include <deque>

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

    /// Whether the kubeconfig at that path (empty: the default one) is known to have that current context,
    /// and that namespace in it: both were chosen here, and no other program has changed the file since.
    bool hasContext(const QString &configPath, const QString &context) const;
    bool hasNamespace(const QString &configPath, const QString &context, const QString &nameSpace) const;

    /// Keeps the kubeconfigs as they are for the reading time: a kubectl that goes by their current context
    /// is about to read them.
    void keepStill() { m_stillSince.start(); }

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
    void endHanging(const std::shared_ptr<Shell> &shell, const QString &what);

    const std::chrono::milliseconds m_readingTime;
    std::deque<Entry> m_waiting;
    bool m_busy = false;
    QElapsedTimer m_stillSince;
    std::optional<Written> m_written;
};

} // namespace tidewright
