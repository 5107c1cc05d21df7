// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QTreeWidget>

namespace tidewright {

/// One entry of the sidebar: a header with the kinds beneath it, or a kind.
struct SidebarItem
{
    QString name;
    QIcon image; ///< null when the package has none of that name
    QList<SidebarItem> children;

    bool isHeader() const { return !children.isEmpty(); }
    bool isLeaf() const { return children.isEmpty(); }
};

/// The name of an item's image: its name in lower case without blanks, and "-sidebar".
QString sidebarImageName(const QString &itemName);
/// The headers and their kinds, in the order shown.
const QList<SidebarItem> &sidebarItems();

/// The outline of the kinds of objects, from which the user picks the table to see. One per cluster window.
class SidebarController : public QTreeWidget
{
    Q_OBJECT
public:
    explicit SidebarController(QWidget *parent = nullptr);

    /// Selects the item with that name, header or kind; does nothing for another name.
    void select(const QString &name);
    /// Selects the first kind.
    void selectFirst();

    QSize sizeHint() const override;

Q_SIGNALS:
    /// A header or a kind was selected.
    void itemSelected(const QString &name);
};

} // namespace tidewright
