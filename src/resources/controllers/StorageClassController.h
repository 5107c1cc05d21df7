// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/controllers/CommandTable.h"

namespace tidewright {

/// The table of storage classes, one of which is the default.
class StorageClassController : public CommandTable
{
    Q_OBJECT
public:
    explicit StorageClassController(WindowState &window, QWidget *parent = nullptr);

public Q_SLOTS:
    /// Takes the mark of the default class from those that have it, and gives it to the chosen one.
    void setAsDefault();

protected:
    void extendContextMenu(QMenu &menu) override;

private:
    /// Those that the table shows as default, filtered out or not.
    QStringList defaults() const;
    QStringList annotateLine(const QString &name, bool isDefault) const;
};

} // namespace tidewright
