// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/listing/RowStore.h"
#include "resources/usage/TopOutput.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <deque>

namespace tidewright {

/// Keeps in the rows of a table what their objects use, as `kubectl top` tells it, while somebody looks at
/// it. One run after the other, with pauses that grow with what a run takes. The first one is shown in the
/// console, and those that the user asks for. Owned by the table. Main thread only.
class UsageWatch : public QObject
{
    Q_OBJECT
public:
    /// Both must outlive it. Does nothing for a kind of which kubectl does not tell it.
    UsageWatch(RowStore &store, WindowState &window, QObject *parent = nullptr);
    ~UsageWatch() override;

    /// Whether somebody looks at the figures, and there is a place to ask. Asks once the table has rows.
    void setWanted(bool wanted);
    /// The user wants to know now: asks whatever the pause, with the command in the console.
    void askAgain();
    /// The table shows another place: forgets all figures, with the answer that is on its way.
    void clear();

    /// Why there are no figures: kubectl's words; empty when there is no reason.
    QString problem() const { return m_problem; }

Q_SIGNALS:
    void problemChanged();

private:
    using Key = Usages::key_type;
    struct Answer
    {
        Usages usages;
        QString problem;
    };

    bool canAsk() const;
    void schedule();
    void ask();
    void answered(const Answer &answer);
    void setProblem(const QString &problem);
    void setUsages(const Usages &usages);
    void compare(const KubeTableItem &row);
    void applySoon();
    void apply();
    std::vector<std::pair<std::size_t, Row>> changedRows();

    RowStore &m_store;
    WindowState &m_window;
    QTimer m_timer{this};
    QDeadlineTimer m_rest{0}; ///< no question before
    QElapsedTimer m_asked;
    std::shared_ptr<Shell> m_shell; ///< of the question that is not answered; else null
    Usages m_usages; ///< of the latest answer
    std::deque<Key> m_outdated; ///< rows that hold something else than the answer, or did
    QString m_problem;
    bool m_isWanted = false;
    bool m_isTold = true; ///< the console shows the next question
    bool m_isApplying = false;
};

} // namespace tidewright
