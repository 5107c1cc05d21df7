// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/running/Shell.h"
#include "resources/listing/Merge.h"
#include "resources/listing/RowStore.h"

#include <QDateTime>
#include <QElapsedTimer>

#include <chrono>
#include <deque>

namespace tidewright {

/// How one load ended and what its listing was like.
struct LoadOutcome
{
    QDateTime startedAt;
    std::chrono::milliseconds duration{0}; ///< until its rows were in the table, without times of suspension
    bool stopped = false; ///< the user ended it; the rows are what they were
    std::optional<QString> error; ///< what kubectl wrote to standard error, or the runner's message
    bool errorIsText = true; ///< false when kubectl wrote an error that was not UTF-8
    bool isText = true; ///< false when the listing was not UTF-8 and nothing of it could be read
    std::optional<int> signal; ///< that ended kubectl half-way: rows may be missing
    bool endedWell = false; ///< with exit status 0: what is in `error` are warnings
    std::size_t lines = 0;
    std::size_t skippedLines = 0; ///< of these, lines that were not rows of this kind
    QString firstSkippedLine;
    std::optional<QStringList> otherTitles; ///< as MergeResult has them
};

/// The road of a listing into a table: kubectl and the merge run in the background, the changes are applied
/// on the main thread in slices that fit a frame, one listing after the other. Each load applies its own
/// result when it arrives. Owned by a table; main thread only.
class ListingPipeline : public QObject
{
    Q_OBJECT
public:
    explicit ListingPipeline(RowStore &store, QObject *parent = nullptr);
    ~ListingPipeline() override;

    /// Runs `arguments`, followed by the kind's output arguments, on `shell`. When that fails in a way for
    /// which the kind has other output arguments, runs once more with these, logged or not like the first
    /// time. An unattended load is one that nobody asked for (the refresh timer).
    void load(const std::shared_ptr<Shell> &shell, const QStringList &arguments, LineForm form,
        bool logToConsole, bool unattended);
    /// Ends the loads whose listing has not arrived; each still reports its outcome.
    void stop();
    /// Empties the table and ends all loads; nothing is heard of them any more.
    void clear();

    bool isLoading() const { return !m_loads.empty(); }
    bool hasUnattendedLoad() const;
    /// Between `mergeBegins` and the end of that load.
    bool isMerging() const { return m_merging.has_value(); }
    /// When the oldest load under way was started.
    QDateTime loadingSince() const;

Q_SIGNALS:
    void loadingChanged(bool loading);
    /// A listing is being compared with the rows: until its load has finished only it may change them.
    void mergeBegins();
    /// A slice of changes is in the store.
    void rowsChanged();
    void finished(const tidewright::LoadOutcome &outcome);

private:
    struct Load
    {
        quint64 id = 0;
        std::shared_ptr<Shell> shell;
        QStringList arguments;
        LineForm form = LineForm::Plain;
        bool logToConsole = false;
        bool unattended = false;
        bool triedAgain = false;
        bool arrived = false;
        QByteArray listing;
        LoadOutcome outcome;
        QElapsedTimer running;
    };
    /// The merge result that is being applied, and how far that has come.
    struct Application
    {
        quint64 loadId = 0;
        std::shared_ptr<MergeResult> merged;
        std::size_t changedDone = 0;
        std::size_t addedDone = 0;
    };

    Load *find(quint64 id);
    void run(const Load &load, const QStringList &outputArguments);
    bool tryOtherOutput(Load &load, const LoadOutcome &outcome);
    void listingArrived(quint64 id, const QByteArray &listing, const LoadOutcome &outcome);
    void mergeNext();
    void merged(quint64 id, std::shared_ptr<MergeResult> result);
    void applySlice(quint64 id);
    void finish(quint64 id);
    void endLoads();

    RowStore &m_store;
    std::shared_ptr<const ResourceKind> m_kind; // for the workers
    QStringList m_otherOutput; // the template that this place needs; empty for the kind's usual one
    std::deque<Load> m_loads;
    std::deque<quint64> m_arrived; // listings that wait for their merge
    std::optional<quint64> m_merging;
    Application m_application;
    quint64 m_lastId = 0;
};

} // namespace tidewright
