// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/SidebarController.h"

#include "resources/widgets/NamedImages.h"

#include <QHeaderView>
#include <QStyledItemDelegate>

namespace tidewright {

namespace {

class SidebarDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const bool header = !index.parent().isValid();
        const int extra = header ? (index.row() == 0 ? 10 : 18) : 10;
        return {QStyledItemDelegate::sizeHint(option, index).width(), option.fontMetrics.height() + extra};
    }

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (index.parent().isValid()) {
            return;
        }
        option->font.setBold(true);
        option->font.setPointSizeF(option->font.pointSizeF() * 0.88);
        option->displayAlignment = Qt::AlignLeft | Qt::AlignBottom;
        option->icon = QIcon();
        option->rect.setLeft(option->rect.left() + 7);
        option->features &= ~QStyleOptionViewItem::HasDecoration;
        option->palette.setColor(QPalette::Text, option->palette.color(QPalette::PlaceholderText));
    }
};

SidebarItem item(const char *name, std::initializer_list<const char *> kinds = {})
{
    const QString text = QString::fromLatin1(name);
    SidebarItem result{text, namedImage(sidebarImageName(text)), {}};
    for (const char *kind : kinds) {
        result.children.append(item(kind));
    }
    return result;
}

} // namespace

QString sidebarImageName(const QString &itemName)
{
    return itemName.toLower().remove(QLatin1Char(' ')) + QLatin1String("-sidebar");
}

const QList<SidebarItem> &sidebarItems()
{
    static const QList<SidebarItem> items{
        item("Infrastructure",
            {"Pods", "Deployments", "Services", "Persistent Volumes", "Endpoints", "Daemon Sets",
                "Replica Sets", "Stateful Sets", "Persistent Volume Claims", "Storage Classes", "Ingresses",
                "Network Policies", "Horizontal Pod Autoscalers", "Nodes", "Namespaces"}),
        item("Tasks", {"Cron Jobs", "Jobs"}),
        item("Configuration",
            {"Cluster Roles", "Config Maps", "Secrets", "Service Accounts", "Roles", "Role Bindings",
                "Cluster Role Bindings", "Custom Resource Definitions"}),
        item("Status", {"Events"})};
    return items;
}

SidebarController::SidebarController(QWidget *parent)
    : QTreeWidget(parent)
{
    setAccessibleName(QStringLiteral("Sidebar"));
    setProperty("keepsKeyboardFocus", true);
    setHeaderHidden(true);
    setColumnCount(1);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setExpandsOnDoubleClick(false);
    setIndentation(10);
    setFrameShape(QFrame::NoFrame);
    setIconSize(QSize(16, 16));
    setTextElideMode(Qt::ElideRight);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setItemDelegate(new SidebarDelegate(this));
    for (const SidebarItem &header : sidebarItems()) {
        auto *headerItem = new QTreeWidgetItem(this, {header.name});
        headerItem->setIcon(0, header.image);
        for (const SidebarItem &kind : header.children) {
            (new QTreeWidgetItem(headerItem, {kind.name}))->setIcon(0, kind.image);
        }
    }
    expandAll();
    connect(this, &QTreeWidget::itemSelectionChanged, this, [this] {
        if (const auto selected = selectedItems(); !selected.isEmpty()) {
            Q_EMIT itemSelected(selected.first()->text(0));
        }
    });
}

void SidebarController::select(const QString &name)
{
    const auto found = findItems(name, Qt::MatchExactly | Qt::MatchRecursive);
    if (!found.isEmpty()) {
        setCurrentItem(found.first());
    }
}

void SidebarController::selectFirst()
{
    setCurrentItem(topLevelItem(0)->child(0));
}

QSize SidebarController::sizeHint() const
{
    return {225, 480};
}

} // namespace tidewright
