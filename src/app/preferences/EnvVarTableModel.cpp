// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferences/EnvVarTableModel.h"

#include <algorithm>

namespace tidewright {

void EnvVarTableModel::setCustomEnvvars(const QList<EnvVar> &variables)
{
    beginResetModel();
    m_customEnvvars = variables;
    endResetModel();
}

void EnvVarTableModel::appendEmpty()
{
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_customEnvvars.append(EnvVar());
    endInsertRows();
}

void EnvVarTableModel::removeRowsAt(QList<int> rows)
{
    std::sort(rows.begin(), rows.end(), std::greater());
    for (const int row : std::as_const(rows)) {
        beginRemoveRows({}, row, row);
        m_customEnvvars.removeAt(row);
        endRemoveRows();
    }
}

int EnvVarTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_customEnvvars.size());
}

int EnvVarTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant EnvVarTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole) {
        return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    }
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    return section == NameColumn ? tr("Name") : tr("Value");
}

Qt::ItemFlags EnvVarTableModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags usual = QAbstractTableModel::flags(index);
    return index.isValid() ? usual | Qt::ItemIsEditable : usual;
}

QVariant EnvVarTableModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)
        || (role != Qt::DisplayRole && role != Qt::EditRole)) {
        return {};
    }
    const EnvVar &variable = m_customEnvvars.at(index.row());
    return index.column() == NameColumn ? variable.key : variable.value;
}

bool EnvVarTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::EditRole) {
        return false;
    }
    EnvVar &variable = m_customEnvvars[index.row()];
    (index.column() == NameColumn ? variable.key : variable.value) = value.toString();
    Q_EMIT dataChanged(index, index);
    Q_EMIT edited();
    return true;
}

} // namespace tidewright
