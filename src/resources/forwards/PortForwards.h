// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/forwards/PortForward.h"

#include <QAbstractTableModel>

#include <memory>
#include <vector>

namespace tidewright {

/// All port forwards of the program, a row for each in the order in which they were started. They outlive the
/// windows that they were started from. Main thread.
class PortForwards : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { Object, Port, Address, State, Context, Namespace, Window, ColumnCount };

    /// The program's own.
    static PortForwards &shared();
    using QAbstractTableModel::QAbstractTableModel;

    /// Takes it over and starts it.
    void add(std::unique_ptr<PortForward> forward);
    /// Null for a row that is not there.
    PortForward *at(int row) const;
    /// Ends it, whatever its state, and forgets it.
    void stop(int row);
    void stopAll();

    /// What there is to say of a cell beyond its text, or else that: all of kubectl's last words, the
    /// kubeconfig of the context.
    QString details(const QModelIndex &index) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void rowChanged(const PortForward *forward);

    std::vector<std::unique_ptr<PortForward>> m_forwards;
};

} // namespace tidewright
