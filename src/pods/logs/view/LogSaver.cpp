// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogSaver.h"

#include "pods/logs/text/LogExport.h"
#include "pods/logs/view/LogStatusLine.h"

#include <QDir>
#include <QFileDialog>

namespace tidewright {

LogSaver::LogSaver(LogStatusLine &status, QWidget &window)
    : m_status(status)
    , m_window(window)
{
}

LogSaver::~LogSaver()
{
    if (m_export) {
        m_export->leaveAlone();
    }
}

bool LogSaver::isBusy() const
{
    return m_export;
}

void LogSaver::chooseFile(
    const QString &title, const QString &name, std::function<void(const QString &path)> chosen)
{
    auto *dialog = new QFileDialog(&m_window, title);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave); // asks before it replaces a file
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDefaultSuffix(QStringLiteral("log"));
    QString fileName = name;
    dialog->selectFile(fileName.replace(u'/', u'-') + QLatin1String("-logs.log"));
    connect(dialog, &QFileDialog::fileSelected, this, std::move(chosen));
    dialog->open();
}

void LogSaver::save(const LogBytes &bytes, std::vector<LogRange> ranges, const QString &path)
{
    if (m_export) {
        m_export->disconnect(this);
        m_export->leaveAlone();
    }
    const qint64 size = totalLength(ranges);
    m_export = new LogExport(bytes, std::move(ranges), path);
    m_status.setNotice(tr("Saving…"));
    m_status.setProgress(0);
    Q_EMIT busyChanged(true);
    connect(m_export, &LogExport::progressed, this, [this](int percent) { m_status.setProgress(percent); });
    connect(m_export, &LogExport::finished, this, [this, size](const QString &problem) {
        const QString shown = QDir::toNativeSeparators(m_export->path());
        m_status.setNotice(problem.isEmpty() ? tr("Saved %1 to %2").arg(bytesText(size), shown)
                                             : tr("%1 could not be saved: %2").arg(shown, problem));
        m_status.setProgress(-1);
        m_export = nullptr; // it goes by itself
        Q_EMIT busyChanged(false);
    });
}

} // namespace tidewright
