// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/ResourceTableModel.h"

#include <QAbstractProxyModel>

namespace tidewright {

/// One level of a sort order.
struct SortDescriptor
{
    int column = 0;
    Qt::SortOrder order = Qt::AscendingOrder;

    friend bool operator==(const SortDescriptor &, const SortDescriptor &) = default;
};

/// Arranges a ResourceTableModel for display: the rows whose name contains the filter text (without regard to case), in
/// the order of the sort descriptors, rows that compare equal in the order in which they were added. Typed keys, no string comparison of
/// numbers. A change of the source, the filter or the order costs a constant number of model signals, however many rows
/// it concerns; persistent indexes (selection, widgets in cells) stay on their rows.
class ArrangingModel : public QAbstractProxyModel
{
    Q_OBJECT
public:
    explicit ArrangingModel(ResourceTableModel &source, QObject *parent = nullptr);

    const QList<SortDescriptor> &sorts() const;
    /// The empty list, the order at first, shows rows as they were added.
    void setSorts(const QList<SortDescriptor> &sorts);
    QString filter() const;
    void setFilter(const QString &text);

    /// The row shown at `row`, which must exist.
    const Row &arrangedRow(int row) const;

    void sort(int column, Qt::SortOrder order) override; ///< column -1 removes the sort order
};

} // namespace tidewright
