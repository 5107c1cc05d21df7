// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogExport.h"

#include "core/running/Console.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/threads/MainQueue.h"
#include "pods/logs/text/LogScan.h"

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>

#include <algorithm>
#include <functional>

namespace tidewright {

namespace {

constexpr qint64 block = qint64(1) << 20;

/// False when the file takes no more. `tell` gets whole percents.
bool writeRanges(QSaveFile &file, const LogBytes &bytes, const std::vector<LogRange> &ranges,
    const std::atomic<bool> &cancelled, const std::function<void(int percent)> &tell)
{
    const qint64 size = totalLength(ranges);
    qint64 done = 0;
    int percent = 0;
    for (const LogRange &range : ranges) {
        for (qint64 at = range.start; at < range.end() && !cancelled;) {
            const QByteArrayView piece = bytes.piece(at, std::min(block, range.end() - at));
            if (file.write(piece.data(), piece.size()) != piece.size()) {
                return false;
            }
            at += piece.size();
            done += piece.size();
            if (const int now = static_cast<int>(done * 100 / size); now != percent) {
                percent = now;
                tell(percent);
            }
        }
    }
    return true;
}

} // namespace

LogExport::LogExport(LogBytes bytes, std::vector<LogRange> ranges, const QString &path)
    : QObject(QCoreApplication::instance())
    , m_path(path)
{
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, [this] { delete this; });
    logQueue().post([self = QPointer<LogExport>(this), bytes = std::move(bytes), ranges = std::move(ranges),
                        path, cancelled = m_cancelled] {
        QSaveFile file(path);
        bool written = file.open(QIODevice::WriteOnly);
        const auto tell = [self](int percent) {
            postToMain(self, [percent](LogExport &output) { Q_EMIT output.progressed(percent); });
        };
        written = written && writeRanges(file, bytes, ranges, *cancelled, tell);
        if (*cancelled) {
            return; // the unfinished file goes away
        }
        written = written && file.commit();
        const QString problem = written ? QString() : file.errorString();
        postToMain(self, [problem](LogExport &output) { output.end(problem); });
    });
}

LogExport::~LogExport()
{
    if (!m_ended) {
        *m_cancelled = true;
        writeDiagnostic(
            tr("%1 was not saved: the application has ended.").arg(QDir::toNativeSeparators(m_path)),
            DiagnosticStream::StandardError);
    }
}

void LogExport::end(const QString &problem)
{
    m_ended = true;
    Q_EMIT finished(problem);
    deleteLater();
}

void LogExport::leaveAlone()
{
    connect(
        this, &LogExport::finished, this, [path = QDir::toNativeSeparators(m_path)](const QString &problem) {
            if (!problem.isEmpty()) {
                postConsoleError(tr("%1 could not be saved: %2").arg(path, problem));
            }
        });
}

} // namespace tidewright
