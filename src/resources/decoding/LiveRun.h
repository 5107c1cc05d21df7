// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace tidewright {

/// One object, or its end, as a child of a live stream told of it.
struct LiveChange
{
    enum class Kind {
        Put, ///< it is there, with this line
        Remove,
        Skip, ///< it is there, and cannot be shown; the line says why
    };

    Kind kind = Kind::Put;
    QByteArray key{}; ///< LiveUpsert::key
    QByteArray uid{};
    QByteArray line{};
    QByteArray order{}; ///< what a listing sorts by (kubectl's --sort-by), where the kind's listing is sorted
};

/// What is known of one child of a live stream beside the objects, at its end at the latest.
struct LiveRun
{
    QByteArray resourceVersion; ///< of the latest event, or of the list; empty when nothing came
    QByteArray continueToken; ///< of a list of which there is more
    bool isWholeList = false; ///< the list came to its end
    qint64 objects = 0; ///< of the list, or of the state that a watch begins with
    qint64 bytes = 0; ///< of these
    bool isExpired = false; ///< a watch whose version the server does not know any more
    bool isStateTold = false; ///< a watch has told the whole state
    bool isUnsorted = false; ///< in another order than that of names
    QString garbled; ///< what was wrong with its bytes: a sentence. Changes may have been lost then
    QByteArray text; ///< what a child printed that tells of no objects
    QString serverError; ///< what the server reported on a watch, other than that
};

/// Turns what one child prints into changes. Used on the thread that reads it.
class LiveDecoder
{
public:
    virtual ~LiveDecoder() = default;

    /// The next piece of standard output, which may be cut anywhere.
    virtual void take(QByteArrayView bytes, std::vector<LiveChange> &changes) = 0;

    const LiveRun &run() const { return m_run; }

protected:
    LiveDecoder() = default;
    LiveDecoder(const LiveDecoder &) = default;
    LiveDecoder &operator=(const LiveDecoder &) = default;

    LiveRun m_run;
};

} // namespace tidewright
