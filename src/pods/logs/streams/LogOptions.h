// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"

namespace tidewright {

/// The cluster and the namespace that the streams of a logs window read from.
struct LogPlace
{
    QString kubeConfig; ///< the value of KUBECONFIG; empty for kubectl's own
    QString context;
    QString nameSpace; ///< of what names none itself

    /// "--context=" and "-n" of a container, or of what stands in its place.
    QStringList arguments(const QString &ownNamespace) const;
    /// A shell whose children use the kubeconfig.
    std::shared_ptr<Shell> makeShell() const;
};

/// What is asked of `kubectl logs` for a container.
struct LogOptions
{
    /// Where a log begins: so many lines before its end, or so long ago.
    enum class From { Last50, Last500, Last5000, All, FiveMinutes, OneHour, Today };

    From from = From::Last50;
    bool timestamps = false; ///< in front of each line, as kubectl puts them
    bool previous = false; ///< of the container's previous instance, which writes no more
    QByteArray since = {}; ///< a timestamp; stands in the place of `from`

    /// kubectl's options; `now` tells which day is today.
    QStringList arguments(const QDateTime &now) const;
};

/// The whole command line that follows a container's log.
QStringList logArguments(const LogPlace &place, const ContainerPair &pair, const LogOptions &options,
    const QDateTime &now = QDateTime::currentDateTime());

} // namespace tidewright
