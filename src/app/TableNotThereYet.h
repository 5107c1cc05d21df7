// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace tidewright {

/// Stands in a tab whose table this version does not have yet, and says so.
class TableNotThereYet : public QWidget
{
    Q_OBJECT
public:
    explicit TableNotThereYet(const QString &kindName, QWidget *parent = nullptr);
};

} // namespace tidewright
