// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;
class QToolButton;

namespace tidewright {

class CombinedLogsViewController;

/// The line below a log: where the text comes from, how much there is, how its streams do, and what can be
/// done about those that have ended. Main thread; the content outlives it.
class LogStatusLine : public QWidget
{
    Q_OBJECT
public:
    explicit LogStatusLine(CombinedLogsViewController &content);

    QString text() const;
    /// A sentence about what the user has done last.
    void setNotice(const QString &sentence);
    /// Of work in the background; -1 when there is none.
    void setProgress(int percent);
    void refresh();

private:
    void build();
    void buildButtons();
    QWidget *makePlaceLabel();
    QStringList parts() const;

    CombinedLogsViewController &m_content;
    QLabel *m_status;
    QLabel *m_notice;
    QProgressBar *m_progress;
    QLabel *m_following;
    QToolButton *m_followRefused;
    QToolButton *m_followAgain;
    QToolButton *m_jump;
};

/// Numbers and sizes as the user's language writes them.
QString countedText(qint64 number);
QString bytesText(qint64 bytes);

} // namespace tidewright
