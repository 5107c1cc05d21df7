// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// A kind that a cluster says it serves, its own or one that somebody has defined.
struct ServedKind
{
    QString plural; ///< such as "vessels"
    QString group; ///< such as "harbor.example"; empty for the oldest kinds
    QString kind; ///< such as "Vessel"
    QStringList shortNames = {};
    bool namespaced = true;
    QString version = {}; ///< such as "v1"; empty when nobody has told
    bool watchable = true; ///< changes can be followed, as far as is known

    /// What kubectl takes for this kind and no other: "vessels.harbor.example".
    QString resource() const;
    /// For people: "Vessels", "Certificate Signing Requests".
    QString title() const;

    bool operator==(const ServedKind &) const = default;
};

/// Which kinds a cluster serves that can be listed: the arguments after "kubectl" for `parseServedKinds`.
QStringList servedKindsArguments();
/// Output of that, of any client from 1.20 on. What cannot be a kind is left out. Any thread.
std::vector<ServedKind> parseServedKinds(const QByteArray &printed);

/// Kinds in the form of a setting, and back; what is none is left out. Of a kind that cannot be watched the
/// version is left out: without one the cluster is asked again.
QString settingOf(const std::vector<ServedKind> &kinds);
std::vector<ServedKind> servedKindsFromSetting(const QString &setting);

/// The table of such a kind, with the columns that kubectl prints for people: `titles` are theirs, without
/// that of the namespace, as it printed them last. A listing with other titles yields these instead of rows
/// (MergeResult::otherTitles); none while they are not known. Behind the seventh column, those that stand
/// after the age are hidden at first. The age itself goes on by the clock: `startTimeString` is the moment
/// that the printed age stands for.
ResourceKind printedKind(const ServedKind &served, const QStringList &titles);

/// A kind of the same objects, for a live stream: its lines change with an object, and tell no more of it.
ResourceKind versionsOf(const ResourceKind &printed);

/// Whether a cell of such a row, the age apart, is a span of time ("5m12s"): it may have grown since it was
/// printed, though no object has changed. Any thread.
bool showsSpanOfTime(const KubeTableItem &row);

/// The order of a cell: numbers, ages such as "5d3h" and quantities by their value, then texts as people
/// count, then what is not there. A share of a CPU ("250m") is none of minutes in a column titled so.
SortKey printedSortKey(const QString &cell, const QString &title);

} // namespace tidewright
