// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace tidewright {

class LogDocument;
class LogView;

/// Leads to the first line of a log that is not older than a time the user types. Needs lines that begin with
/// timestamps. Main thread; the document and the view outlive it.
class LogTimeJump : public QObject
{
    Q_OBJECT
public:
    LogTimeJump(LogDocument &document, LogView &view);

    /// Asks for the time.
    void ask();
    /// "9:30", "09:30:05" or a whole timestamp; the log is looked through in the background.
    void jump(const QString &time);

Q_SIGNALS:
    /// Why it leads nowhere, as a sentence; empty once it has led somewhere.
    void noticed(const QString &sentence);

private:
    QByteArray example() const;

    LogDocument &m_document;
    LogView &m_view;
};

} // namespace tidewright
