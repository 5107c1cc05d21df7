// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QIcon>

class QListWidget;

namespace tidewright {

class ToolBarLayout;

/// A command that can stand in the toolbar.
struct ToolBarItem
{
    QString identifier;
    QString title;
    QIcon icon;
};

/// Lets the user choose which commands stand in the toolbar, and in which order. Every change shows at once.
class ToolBarDialog : public QDialog
{
    Q_OBJECT
public:
    /// `items` are all there are. `layout` must outlive the dialog.
    ToolBarDialog(QList<ToolBarItem> items, ToolBarLayout &layout, QWidget *parent);

private:
    void fill();
    void store();
    void move(int step);

    const QList<ToolBarItem> m_items;
    ToolBarLayout &m_layout;
    QListWidget *m_list;
};

} // namespace tidewright
