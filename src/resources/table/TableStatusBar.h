// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QTimer>
#include <QWidget>

class QLabel;
class QToolButton;

namespace tidewright {

/// The line below a table: how many rows there are, what is wrong with them, as of when they are, and how
/// long a load has been running, with a button to stop it.
class TableStatusBar : public QWidget
{
    Q_OBJECT
public:
    explicit TableStatusBar(QWidget *parent = nullptr);

    void setCounts(const QString &text);
    /// A sentence about rows that may be missing or wrong, details in the tool tip; empty hides it.
    void setWarning(const QString &sentence, const QString &details);
    void setAsOf(const QDateTime &time);
    /// An invalid time says that nothing is being loaded.
    void setLoadingSince(const QDateTime &start);

    /// The text about time: as of when the rows are, or how long the load has been running.
    QString timeText() const;

Q_SIGNALS:
    void stopRequested();

private:
    void updateTime();

    QLabel *m_counts;
    QLabel *m_warningImage;
    QLabel *m_warning;
    QLabel *m_time;
    QToolButton *m_stop;
    QTimer m_tick;
    QDateTime m_asOf;
    QDateTime m_loadingSince;
};

} // namespace tidewright
