// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace tidewright {

/// One object that kubectl listed: the base of every kind's row. A row in a table is never written again; a
/// refresh that finds a difference puts a changed copy in its place, so rows may be read from any thread.
struct KubeTableItem
{
    explicit KubeTableItem(const QString &objectName);
    virtual ~KubeTableItem();

    QString name; ///< as kubectl printed it; with the namespace the key by which rows are matched
    QString nameSpace; ///< empty in tables that show one namespace
    QString foldedName; ///< `name` for searches without regard to case
    QByteArray nameSortKey; ///< the natural order of `name`, made off the main thread with the row
    QString startTimeString; ///< the creation time as kubectl printed it, unparsed
    /// Seconds from the start time to the moment the age text was last produced, 0 until then. Main thread
    /// only, so a copy starts with 0 and the table hands the value on when it puts the copy in this row's
    /// place.
    mutable double startTimeInterval = 0;
    /// The line that gave this row its fields; empty in copies, whose fields may be changed otherwise.
    QByteArray line;

    /// The age text of `startTimeString`, or "<unknown>". Main thread.
    virtual QString getAge() const;

    KubeTableItem &operator=(const KubeTableItem &) = delete;
    /// What kubectl printed is the same; for the defaulted comparison of a kind's row.
    friend bool operator==(const KubeTableItem &a, const KubeTableItem &b)
    {
        return a.name == b.name && a.nameSpace == b.nameSpace && a.startTimeString == b.startTimeString;
    }

protected:
    KubeTableItem(const KubeTableItem &other);

    /// The age text of any timestamp; stores the seconds in `startTimeInterval` when it is asked to.
    QString ageSince(const QString &timestamp, bool storeInterval) const;
};

/// A line as the listing of its kind has it, and behind a NUL the fields that only a live stream tells of
/// (ResourceKind::liveArguments), when it came from one.
QByteArrayView listedPart(QByteArrayView line);
/// Empty without any.
QByteArrayView livePart(QByteArrayView line);
/// Of both; a NUL in `live` becomes a blank.
QByteArray lineOf(const QByteArray &listed, QByteArrayView live);

using Row = std::shared_ptr<const KubeTableItem>;
using Rows = std::vector<Row>;

/// The text of an age in seconds: "3 days", "5h 0m", "59m", "<1m". Partial units are cut off. `approximate`
/// puts "About " in front of days.
QString formatAge(double seconds, bool approximate);

} // namespace tidewright
