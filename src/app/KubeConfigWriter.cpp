// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/KubeConfigWriter.h"

#include "platform/AtomicFile.h"
#include "platform/ChildProcess.h"
#include "platform/MainQueue.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

constexpr auto longestChange = std::chrono::seconds(20);

QStringList filesOf(const QString &configPath)
{
    const QString list = configPath.isEmpty() ? qEnvironmentVariable("KUBECONFIG") : configPath;
    const QStringList named = list.split(QLatin1Char(':'), Qt::SkipEmptyParts);
    return named.isEmpty() ? QStringList{QDir::homePath() + QLatin1String("/.kube/config")} : named;
}

} // namespace

/// Changes whenever somebody writes one of the files; empty when there is none.
QByteArray KubeConfigWriter::fileState(const QString &configPath)
{
    QByteArray state;
    bool isThere = false;
    for (const QString &path : filesOf(configPath)) {
        const FileIdentity file = FileIdentity::at(QFile::encodeName(path));
        isThere |= file != FileIdentity();
        for (const auto part :
            {std::int64_t(file.inode), file.size, file.modifiedSeconds, file.modifiedNanoseconds}) {
            state += QByteArray::number(qint64(part)) + ' ';
        }
    }
    return isThere ? state : QByteArray();
}

KubeConfigWriter::KubeConfigWriter(std::chrono::milliseconds readingTime)
    : m_readingTime(readingTime)
{
    m_delay.setSingleShot(true);
    m_delay.callOnTimeout(this, &KubeConfigWriter::takeDelayedStep);
}

void KubeConfigWriter::enqueue(QObject *owner, Task task)
{
    m_waiting.push_back({owner, std::move(task)});
    if (!m_busy) {
        runNext();
    }
}

void KubeConfigWriter::runNext()
{
    while (!m_busy && !m_waiting.empty()) {
        const Entry entry = std::move(m_waiting.front());
        m_waiting.pop_front();
        if (!entry.owner) {
            continue;
        }
        m_busy = true;
        entry.task([self = QPointer<KubeConfigWriter>(this)] {
            if (self) {
                self->m_busy = false;
                self->runNext();
            }
        });
    }
}

void KubeConfigWriter::useContext(const KubeCtl &kubeCtl, const QString &name, Done done)
{
    afterStillness([this, kubeCtl, name, done = std::move(done)] {
        const auto completion = [self = QPointer<KubeConfigWriter>(this), kubeCtl, name, done](bool success) {
            postToMain(self, [kubeCtl, name, done, success](KubeConfigWriter &writer) {
                writer.m_written.reset();
                if (success) {
                    // The context comes with a namespace of its own, whatever was set in another one before.
                    writer.m_written
                        = {kubeCtl.configPath, fileState(kubeCtl.configPath), name, std::nullopt};
                }
                done(success);
            });
        };
        if (const auto shell = kubeCtl.useContext(name, completion)) {
            endHanging(shell, QLatin1String("Context ") + name);
        } else {
            completion(false);
        }
    });
}

void KubeConfigWriter::setNamespace(const KubeCtl &kubeCtl, const QString &name, Done done)
{
    afterStillness([this, kubeCtl, name, done = std::move(done)] {
        const bool untouched = isUntouched(kubeCtl.configPath);
        const auto completion
            = [self = QPointer<KubeConfigWriter>(this), kubeCtl, name, done, untouched](bool success) {
                  if (!self) {
                      return;
                  }
                  if (success && untouched) {
                      self->m_written->state = fileState(kubeCtl.configPath);
                      self->m_written->nameSpace = name;
                  } else {
                      // A change fails on the file's lock just when somebody else is writing.
                      self->m_written.reset();
                  }
                  done(success);
              };
        if (const auto shell = kubeCtl.setNamespace(name, completion)) {
            endHanging(shell, QLatin1String("Namespace ") + name);
        }
    });
}

bool KubeConfigWriter::isUntouched(const QString &configPath) const
{
    return m_written && m_written->path == configPath && !m_written->state.isEmpty()
        && m_written->state == fileState(configPath);
}

void KubeConfigWriter::observe(const QString &configPath, const QByteArray &before, const QString &context)
{
    if (before == fileState(configPath) && !hasContext(configPath, context)) {
        m_written = {configPath, before, context, std::nullopt};
    }
}

bool KubeConfigWriter::hasContext(const QString &configPath, const QString &context) const
{
    return isUntouched(configPath) && m_written->context == context;
}

bool KubeConfigWriter::hasNamespace(
    const QString &configPath, const QString &context, const QString &nameSpace) const
{
    return hasContext(configPath, context) && m_written->nameSpace == nameSpace;
}

void KubeConfigWriter::afterStillness(std::function<void()> step)
{
    m_delayedStep = std::move(step);
    takeDelayedStep();
}

void KubeConfigWriter::takeDelayedStep()
{
    std::erase_if(m_stillness, [](const auto &stillness) { return stillness.expired(); });
    qint64 rest = 0;
    for (const auto &stillness : m_stillness) {
        const auto since = stillness.lock();
        rest = std::max<qint64>(rest, m_readingTime.count() - since->elapsed());
    }
    if (rest > 0) {
        m_delay.start(std::chrono::milliseconds(rest));
    } else if (const auto step = std::exchange(m_delayedStep, {})) {
        m_delay.stop();
        step();
    }
}

std::shared_ptr<void> KubeConfigWriter::keepStill()
{
    const std::shared_ptr<QElapsedTimer> since(
        new QElapsedTimer, [self = QPointer<KubeConfigWriter>(this)](QElapsedTimer *ended) {
            delete ended;
            if (self) {
                QMetaObject::invokeMethod(self, &KubeConfigWriter::takeDelayedStep, Qt::QueuedConnection);
            }
        });
    since->start();
    m_stillness.push_back(since);
    return since;
}

void KubeConfigWriter::finish(std::chrono::milliseconds limit) const
{
    const auto shell = m_running.lock();
    if (const auto process = shell ? shell->process() : nullptr) {
        process->waitUntilExit(limit);
    }
}

void KubeConfigWriter::endHanging(const std::shared_ptr<Shell> &shell, const QString &what)
{
    m_running = shell;
    QTimer::singleShot(longestChange, this, [weak = std::weak_ptr(shell), what] {
        if (const auto hanging = weak.lock()) {
            hanging->cancel();
            postConsoleError(what
                + QLatin1String(
                    " could not be set: kubectl did not change the kubeconfig within 20 seconds. If a file "
                    "of the kubeconfig's name with the ending .lock stays behind, remove it."));
        }
    });
}

} // namespace tidewright
