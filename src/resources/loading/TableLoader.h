// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/listing/ListingPipeline.h"
#include "resources/live/LiveStream.h"
#include "resources/loading/ListingPace.h"
#include "resources/loading/LiveRows.h"

#include <QElapsedTimer>
#include <QTimer>

namespace tidewright {

/// One load of a table.
struct LoadRequest
{
    bool logged = false; ///< the window's console shows the command
    bool unattended = false; ///< nobody asked for it: the refresh timer
    int niceness = 0; ///< above 0 kubectl yields to the runs of tables that somebody looks at
};

/// Keeps the rows of one table what the cluster has in the context and namespace that the window shows, and
/// knows how far they are true. Two sources feed the rows: listings, and while the window has live updates a
/// stream of changes. Where the stream cannot be had, and until it can, listings do its work. Of a kind whose
/// rows only kubectl can print the stream tells when to list them. Main thread only.
class TableLoader : public QObject
{
    Q_OBJECT
public:
    /// Both must outlive the loader.
    TableLoader(RowStore &store, WindowState &window, QObject *parent = nullptr);
    ~TableLoader() override;

    /// From now on the rows are the objects with these labels: a label selector as kubectl takes it, empty
    /// for all objects. Empties the table when that is a change.
    void setLabelSelector(const QString &selector);
    const QString &labelSelector() const { return m_labelSelector; }

    /// Makes the rows true: a listing, or without `logged` the stream when there is one. Does nothing while
    /// there is no place to load from.
    void load(const LoadRequest &request);
    /// Time has passed: lists once more, unless the stream does that work, or the last listing was a moment
    /// ago for what it cost, or has failed several times.
    void refresh();
    /// The window has come to the front: what has failed several times is tried again now.
    void userIsBack();
    /// Empties the table at once; loads under way are ended, their rows never appear.
    void clear();
    /// Ends the loads under way; the rows stay as they are.
    void stop();
    /// Whether somebody can see the table. A minute after nobody can the stream pauses.
    void setWatched(bool watched);

    /// Without a namespace kubectl could only complain, and while a context is being switched it would list
    /// the old namespace in the new context.
    bool canLoad() const;
    bool isLoading() const { return m_pipeline.isLoading() || isStreamLoading(); }
    /// Since when the oldest load under way has been running; invalid without one.
    QDateTime loadingSince() const;
    /// The moment to which the rows are known to be true (the start of the load they came with, or when the
    /// stream was heard of last); invalid before the first one.
    QDateTime rowsAsOf() const;
    /// Why the table is empty or incomplete, the first line being a sentence; empty when all is well.
    QString problem() const { return m_problem; }
    /// The latest load brought nothing but a problem.
    bool hasFailed() const { return m_failed; }

    /// How the rows follow the cluster.
    enum class Following {
        Listing, ///< live updates are off
        Live,
        Behind, ///< changes are told, but listing them takes longer than they take to come
        Paused, ///< nobody can see the table
        Reconnecting,
        Refused, ///< only listings are to be had
    };
    Following following() const;
    /// Why it is Reconnecting or Refused; else empty.
    QString followingReason() const;

Q_SIGNALS:
    void loadingChanged(bool loading);
    /// A slice of changes is in the store.
    void rowsChanged();
    /// A load has ended, one way or another, and what it brought is in the store.
    void finished();
    void followingChanged();
    /// The server has other columns for a kind that is listed as kubectl prints it; no rows have come.
    void otherTitles(const QStringList &titles);

private:
    bool isPrinted() const;
    bool wantsStream() const;
    bool needsListing() const;
    bool isStreamLoading() const;
    void list(const LoadRequest &request);
    void follow();
    void leaveStream();
    void streamChanged();
    void stateArrived();
    void changesTold(const LiveBatch &batch);
    void listChanges();
    void listed(const LoadOutcome &outcome);
    void liveUpdatesSwitched();
    void announceLoading();

    RowStore &m_store;
    WindowState &m_window;
    ListingPipeline m_pipeline;
    LiveRows m_liveRows;
    ListingPace m_pace; ///< of a printed kind, from what the stream tells
    QString m_labelSelector;
    std::unique_ptr<LiveStream> m_stream;
    QDateTime m_streamSince; ///< its first state is on the way
    QString m_refusal; ///< why there is no stream in this place
    QTimer m_unwatched{this}; ///< since nobody sees the table
    bool m_isWatched = false;
    bool m_wasLoading = false;
    bool m_hasState = false; ///< the stream has brought all rows once
    QElapsedTimer m_sinceListing; ///< the latest one ended; invalid before
    std::chrono::milliseconds m_listingPause{0}; ///< before the next one that nobody asks for
    int m_failures = 0; ///< of listings, in a row
    int m_streamFailures = 0; ///< likewise
    QDateTime m_rowsAsOf;
    QString m_problem;
    bool m_failed = false;
};

} // namespace tidewright
