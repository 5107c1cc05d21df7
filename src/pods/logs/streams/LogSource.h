// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QStringList>

#include <optional>

namespace tidewright {

/// How one stream of a logs window is doing. What it writes to standard error are notes; an error is only
/// what it has ended with.
struct LogSource
{
    /// The one pod that kubectl follows when it is asked for a deployment, a job or a service of several.
    struct Choice
    {
        QString pod; ///< "pod/NAME"
        QString pods; ///< how many there are
    };

    bool waits = false; ///< for its first stream
    bool ended = false;
    bool hasWritten = false; ///< since the stream began
    QString said; ///< the end of what it has written to standard error
    std::optional<Choice> choice;
    /// Why it could not be started, or how it ended other than well.
    std::optional<QString> failure;

    /// What has become of it, in the words of the window, each with its time; the latest is its last.
    QStringList story;
    QDateTime endedAt; ///< of the last stream that has ended

    /// Something has become of it now.
    void tell(const QString &what);
    /// A stream begins, the first or a further one.
    void begin();
    /// Takes a piece of standard error, cut anywhere.
    void hear(QByteArrayView piece);

    /// How many containers kubectl refused to follow in one go, in digits; empty when that is not why the
    /// stream failed.
    QString refusedContainers() const;

    /// "running", "ended", "ended, error" or "waiting to start".
    QString state() const;
    /// One line to read beside the state: why the stream failed, what has become of it last, which pod
    /// it follows, or else its latest note. Often empty.
    QString note() const;
    /// All there is to know, in lines.
    QString details() const;
};

} // namespace tidewright
