// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace tidewright {

/// One object that kubectl listed: the base of every kind's row. A row in a table is never written again; a refresh that
/// finds a difference puts a changed copy in its place, so rows may be read from any thread.
struct KubeTableItem
{
    explicit KubeTableItem(const QString &objectName);
    virtual ~KubeTableItem();

    QString name;              ///< as kubectl printed it; the key by which rows are matched and objects addressed
    QByteArray nameSortKey;    ///< the natural order of `name`, made once with the row
    QString startTimeString;   ///< the creation time as kubectl printed it, unparsed
    /// Seconds from the start time to the moment the age text was last produced, 0 until then. Main thread only.
    mutable double startTimeInterval = 0;

    /// The age text of `startTimeString`, or "<unknown>". Main thread.
    virtual QString getAge() const;

protected:
    KubeTableItem(const KubeTableItem &) = default;
    KubeTableItem &operator=(const KubeTableItem &) = default;

    /// The age text of any timestamp; stores the seconds in `startTimeInterval` when it is asked to.
    QString ageSince(const QString &timestamp, bool storeInterval) const;
};

using Row = std::shared_ptr<const KubeTableItem>;
using Rows = std::vector<Row>;

/// The text of an age in seconds: "3 days", "5h 0m", "59m", "<1m". Partial units are cut off. `approximate` puts "About "
/// in front of days.
QString formatAge(double seconds, bool approximate);

} // namespace tidewright
