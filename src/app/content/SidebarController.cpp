// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/SidebarController.h"

#include "platform/text/DisplayText.h"
#include "resources/widgets/NamedImages.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QMenu>
#include <QStyledItemDelegate>
#include <QToolTip>

namespace tidewright {

namespace {

enum Role {
    ResourceRole = Qt::UserRole, ///< of another kind
    PinnedRole,
    ObstacleRole,
};

QString nameOf(const QTreeWidgetItem &item)
{
    const QString resource = item.data(0, ResourceRole).toString();
    return resource.isEmpty() ? item.text(0) : resource;
}

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

    /// Who sees is told what screen readers tell.
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem & /*option*/,
        const QModelIndex &index) override
    {
        const QString text = index.data(Qt::AccessibleDescriptionRole).toString();
        QToolTip::showText(event->globalPos(), display_text::toolTip(text), view);
        return true;
    }

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        if (!index.data(ObstacleRole).toString().isEmpty()) {
            const QColor grey = option->palette.color(QPalette::PlaceholderText);
            option->palette.setColor(QPalette::Text, grey);
        }
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
    addOtherKinds();
    expandAll();
    connect(this, &QTreeWidget::itemSelectionChanged, this, [this] {
        if (const auto selected = selectedItems(); !selected.isEmpty()) {
            m_selected = nameOf(*selected.first());
            Q_EMIT itemSelected(m_selected);
        }
    });
}

void SidebarController::addOtherKinds()
{
    m_otherKinds = new QTreeWidgetItem(this, {tr("Other Kinds")});
    m_chooser = new QTreeWidgetItem(m_otherKinds, {tr("Other Kinds…")});
    m_chooser->setFlags(Qt::ItemIsEnabled); // whoever walks past it with the keyboard opens nothing
    m_chooser->setData(
        0, Qt::AccessibleDescriptionRole, tr("Choose among all kinds that the cluster serves"));
    connect(this, &QTreeWidget::itemClicked, this, [this](const QTreeWidgetItem *item) {
        if (item == m_chooser) {
            requestOtherKinds();
        }
    });
}

void SidebarController::requestOtherKinds()
{
    if (QTreeWidgetItem *selected = find(m_selected)) {
        const QSignalBlocker blocker(this); // what is shown stays so
        setCurrentItem(selected);
    }
    Q_EMIT otherKindsRequested();
}

QTreeWidgetItem *SidebarController::find(const QString &name) const
{
    for (int group = 0; group < topLevelItemCount(); ++group) {
        QTreeWidgetItem *header = topLevelItem(group);
        for (int row = 0; row < header->childCount(); ++row) {
            if (nameOf(*header->child(row)).compare(name, Qt::CaseInsensitive) == 0) {
                return header->child(row);
            }
        }
        if (header->text(0).compare(name, Qt::CaseInsensitive) == 0) {
            return header;
        }
    }
    return nullptr;
}

void SidebarController::addOtherKind(const QString &resource, const QString &title, bool pinned)
{
    const bool isTaken = find(title) || !findItems(title, Qt::MatchExactly | Qt::MatchRecursive).isEmpty();
    const QString text = isTaken ? QStringLiteral("%1 (%2)").arg(title, resource) : title;
    auto *item = new QTreeWidgetItem({text});
    item->setIcon(0, namedImage(sidebarImageName(QStringLiteral("Custom Resource Definitions"))));
    item->setData(0, ResourceRole, resource);
    m_otherKinds->insertChild(m_otherKinds->indexOfChild(m_chooser), item);
    setPinned(resource, pinned);
}

void SidebarController::removeOtherKind(const QString &resource)
{
    delete find(resource);
}

void SidebarController::setPinned(const QString &resource, bool pinned)
{
    if (QTreeWidgetItem *item = find(resource)) {
        item->setData(0, PinnedRole, pinned);
        showTexts(*item);
    }
}

void SidebarController::setObstacle(const QString &name, const QString &obstacle)
{
    if (QTreeWidgetItem *item = find(name)) {
        item->setData(0, ObstacleRole, obstacle);
        showTexts(*item);
    }
}

void SidebarController::showTexts(QTreeWidgetItem &item)
{
    const QString obstacle = item.data(0, ObstacleRole).toString();
    QStringList lines;
    if (const QString resource = item.data(0, ResourceRole).toString(); !resource.isEmpty()) {
        lines.append(item.data(0, PinnedRole).toBool() ? tr("%1, pinned").arg(resource) : resource);
    }
    if (!obstacle.isEmpty()) {
        lines.append(obstacle);
    }
    item.setData(0, Qt::AccessibleDescriptionRole, display_text::clean(lines.join(QLatin1Char('\n'))));
}

void SidebarController::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && currentItem() == m_chooser) {
        requestOtherKinds();
    } else {
        QTreeWidget::keyPressEvent(event);
    }
}

void SidebarController::contextMenuEvent(QContextMenuEvent *event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const QTreeWidgetItem *item = byKey ? currentItem() : itemAt(event->pos());
    const QString resource = item ? item->data(0, ResourceRole).toString() : QString();
    if (resource.isEmpty()) {
        return;
    }
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *pin = menu->addAction(tr("Pin"));
    pin->setCheckable(true);
    pin->setChecked(item->data(0, PinnedRole).toBool());
    connect(pin, &QAction::triggered, this,
        [this, resource](bool pinned) { Q_EMIT pinRequested(resource, pinned); });
    connect(menu->addAction(tr("Close")), &QAction::triggered, this,
        [this, resource] { Q_EMIT closeRequested(resource); });
    menu->popup(byKey ? viewport()->mapToGlobal(visualItemRect(item).center()) : event->globalPos());
}

void SidebarController::select(const QString &name)
{
    if (QTreeWidgetItem *item = find(name)) {
        setCurrentItem(item);
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
