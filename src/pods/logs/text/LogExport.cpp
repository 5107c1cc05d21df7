// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/text/LogExport.h"

#include "core/Console.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/threads/MainQueue.h"
#include "pods/logs/text/LogScan.h"

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>

namespace tidewright {

namespace {

constexpr qint64 block = qint64(1) << 20;

} // namespace

LogExport::LogExport(LogBytes bytes, const QString &path)
    : QObject(QCoreApplication::instance())
    , m_path(path)
{
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, [this] { delete this; });
    logQueue().post(
        [self = QPointer<LogExport>(this), bytes = std::move(bytes), path, cancelled = m_cancelled] {
            QSaveFile file(path);
            bool written = file.open(QIODevice::WriteOnly);
            int percent = 0;
            for (qint64 at = 0; written && at < bytes.size() && !*cancelled;) {
                const QByteArrayView piece = bytes.piece(at, block);
                written = file.write(piece.data(), piece.size()) == piece.size();
                at += piece.size();
                if (const int now = static_cast<int>(at * 100 / bytes.size()); now != percent) {
                    percent = now;
                    postToMain(self, [now](LogExport &output) { Q_EMIT output.progressed(now); });
                }
            }
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
