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

    /// Selects the item with that name, header or kind, or the other kind of that resource; does nothing for
    /// another name.
    void select(const QString &name);
    /// Selects the first kind.
    void selectFirst();

    // Kinds that come and go, in a group of their own at the end. Their name is `resource`, such as
    // "vessels.harbor.example"; what it stands for must be there.

    /// Where another item shows that title, the resource stands behind it.
    void addOtherKind(const QString &resource, const QString &title, bool pinned);
    void removeOtherKind(const QString &resource);
    void setPinned(const QString &resource, bool pinned);

    /// Greys a kind (its name in any case) and says why, in its tool tip and to screen readers; an empty
    /// obstacle takes that back. It can be selected all the same.
    void setObstacle(const QString &name, const QString &obstacle);

    QSize sizeHint() const override;

Q_SIGNALS:
    /// A header or a kind was selected.
    void itemSelected(const QString &name);
    /// The user wants to choose among all kinds of the cluster.
    void otherKindsRequested();
    void closeRequested(const QString &resource);
    void pinRequested(const QString &resource, bool pinned);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void addOtherKinds();
    void showTexts(QTreeWidgetItem &item);
    void requestOtherKinds();
    QTreeWidgetItem *find(const QString &name) const;

    QTreeWidgetItem *m_otherKinds = nullptr; ///< the group
    QTreeWidgetItem *m_chooser = nullptr; ///< its last item, which is no kind
    QString m_selected;
};

} // namespace tidewright
