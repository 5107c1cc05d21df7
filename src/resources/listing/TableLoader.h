// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/listing/ListingPipeline.h"

namespace tidewright {

/// One load of a table.
struct LoadRequest
{
    bool logged = false; ///< the window's console shows the command
    bool unattended = false; ///< nobody asked for it: the refresh timer
    int niceness = 0; ///< above 0 kubectl yields to the runs of tables that somebody looks at
};

/// Keeps the rows of one table what the cluster has in the context and namespace that the window shows, and
/// knows how far they are true. Main thread only.
class TableLoader : public QObject
{
    Q_OBJECT
public:
    /// Both must outlive the loader.
    TableLoader(RowStore &store, WindowState &window, QObject *parent = nullptr);

    /// Starts one load: kubectl, merge, apply. Does nothing while there is no place to load from.
    void load(const LoadRequest &request);
    /// Empties the table at once; loads under way are ended, their rows never appear.
    void clear();
    /// Ends the loads under way; the rows stay as they are.
    void stop() { m_pipeline.stop(); }

    /// Without a namespace kubectl could only complain, and while a context is being switched it would list
    /// the old namespace in the new context.
    bool canLoad() const;
    bool isLoading() const { return m_pipeline.isLoading(); }
    bool hasUnattendedLoad() const { return m_pipeline.hasUnattendedLoad(); }
    /// Since when the oldest load under way has been running; invalid without one.
    QDateTime loadingSince() const { return m_pipeline.loadingSince(); }
    /// The moment to which the rows are known to be true (the start of the load they came with); invalid
    /// before the first one.
    QDateTime rowsAsOf() const { return m_rowsAsOf; }
    /// Why the table is empty or incomplete, the first line being a sentence; empty when all is well.
    QString problem() const { return m_problem; }
    /// The latest load brought nothing but a problem.
    bool hasFailed() const { return m_failed; }

Q_SIGNALS:
    void loadingChanged(bool loading);
    /// A slice of changes is in the store.
    void rowsChanged();
    /// A load has ended, one way or another, and what it brought is in the store.
    void finished();

private:
    QStringList listingArguments() const;
    void applyOutcome(const LoadOutcome &outcome);

    RowStore &m_store;
    WindowState &m_window;
    ListingPipeline m_pipeline;
    QDateTime m_rowsAsOf;
    QString m_problem;
    bool m_failed = false;
};

} // namespace tidewright
