// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QList>

namespace tidewright {

struct EnvVar
{
    QString key;
    QString value;

    bool operator==(const EnvVar &) const = default;
};

/// The environment variables that the user edits, one a row, in the order in which they were added. Names and
/// values may be empty, and several rows may have the same name. Main thread.
class EnvVarTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { NameColumn, ValueColumn, ColumnCount };

    using QAbstractTableModel::QAbstractTableModel;

    const QList<EnvVar> &customEnvvars() const { return m_customEnvvars; }
    void setCustomEnvvars(const QList<EnvVar> &variables);
    /// Appends a row with an empty name and value.
    void appendEmpty();
    /// Removes the rows with these numbers; each must exist and appear once.
    void removeRowsAt(QList<int> rows);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

Q_SIGNALS:
    /// The user has finished editing a cell, whether or not its text is another now.
    void edited();

private:
    QList<EnvVar> m_customEnvvars;
};

} // namespace tidewright
