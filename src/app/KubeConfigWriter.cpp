// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/KubeConfigWriter.h"

#include "platform/MainQueue.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QTimer>

namespace tidewright {

namespace {

constexpr auto longestChange = std::chrono::seconds(20);

QStringList filesOf(const QString &configPath)
{
    if (!configPath.isEmpty()) {
        return {configPath};
    }
    const QStringList named = qEnvironmentVariable("KUBECONFIG").split(QLatin1Char(':'), Qt::SkipEmptyParts);
    return named.isEmpty() ? QStringList{QDir::homePath() + QLatin1String("/.kube/config")} : named;
}

/// Changes whenever somebody writes one of the files.
QByteArray fileState(const QString &configPath)
{
    QByteArray state;
    for (const QString &path : filesOf(configPath)) {
        const QFileInfo file(path);
        state += QByteArray::number(file.lastModified().toMSecsSinceEpoch()) + ' '
            + QByteArray::number(file.size()) + '\n';
    }
    return state;
}

} // namespace

KubeConfigWriter::KubeConfigWriter(std::chrono::milliseconds readingTime)
    : m_readingTime(readingTime)
{
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
    return m_written && m_written->path == configPath && m_written->state == fileState(configPath);
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
    const qint64 rest = m_stillSince.isValid() ? m_readingTime.count() - m_stillSince.elapsed() : 0;
    if (rest > 0) {
        QTimer::singleShot(std::chrono::milliseconds(rest), this, std::move(step));
    } else {
        step();
    }
}

void KubeConfigWriter::endHanging(const std::shared_ptr<Shell> &shell, const QString &what)
{
    QTimer::singleShot(longestChange, this, [weak = std::weak_ptr(shell), what] {
        if (const auto hanging = weak.lock()) {
            hanging->cancel();
            postConsoleError(what
                + QLatin1String(
                    " could not be set: kubectl did not change the kubeconfig within 20 seconds."));
        }
    });
}

} // namespace tidewright
