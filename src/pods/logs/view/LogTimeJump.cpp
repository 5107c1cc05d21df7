// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/LogTimeJump.h"

#include "platform/threads/MainQueue.h"
#include "pods/logs/text/LogTime.h"
#include "pods/logs/view/LogView.h"

#include <QInputDialog>

#include <algorithm>

namespace tidewright {

namespace {

constexpr qint64 linesLookedAt = 500;

} // namespace

LogTimeJump::LogTimeJump(LogDocument &document, LogView &view)
    : m_document(document)
    , m_view(view)
{
}

void LogTimeJump::ask()
{
    auto *dialog = new QInputDialog(&m_view);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(tr("Go to Time"));
    dialog->setLabelText(tr("Time of day, such as 9:30 or 09:30:05, or a whole timestamp:"));
    const QByteArray known = example();
    dialog->setTextValue(QString::fromLatin1(known.mid(known.indexOf('T') + 1, 8)));
    connect(dialog, &QInputDialog::textValueSelected, this, &LogTimeJump::jump);
    dialog->open();
}

/// A timestamp of a line on the screen, or near it.
QByteArray LogTimeJump::example() const
{
    const LogProjection &shown = m_document.shown();
    const qint64 top = std::max<qint64>(0, m_view.scroll().top().line - linesLookedAt);
    for (qint64 line = m_view.scroll().top().line; line < shown.lineCount() && line >= top; --line) {
        const qint64 end
            = std::min(shown.lineEnd(line), shown.lineStart(line) + log_time::longestTimestamp + 1);
        const QByteArray begin = m_document.bytes().read(shown.ranges(shown.lineStart(line), end));
        if (const QByteArrayView timestamp = log_time::leading(begin); !timestamp.isEmpty()) {
            return timestamp.toByteArray();
        }
    }
    return {};
}

void LogTimeJump::jump(const QString &time)
{
    const auto moment = log_time::completed(time, example());
    if (!moment) {
        Q_EMIT noticed(tr("\"%1\" is no time, such as 9:30 or 09:30:05.").arg(time));
        return;
    }
    m_document.commit();
    logQueue().post([self = QPointer<LogTimeJump>(this), bytes = m_document.bytes(), moment = *moment, time] {
        const std::optional<qint64> found = log_time::firstLineSince(bytes, moment);
        postToMain(self, [found, time](LogTimeJump &jump) {
            if (found && *found < jump.m_document.size()) {
                jump.m_view.scroll().reveal(*found);
            }
            Q_EMIT jump.noticed(found ? QString() : tr("No line is as late as %1.").arg(time));
        });
    });
}

} // namespace tidewright
