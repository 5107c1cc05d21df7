// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/toolbar/ClusterToolBar.h"

#include "app/content/PrimaryContentController.h"
#include "app/state/KubeSplitViewController.h"
#include "app/state/TypedNamespaces.h"
#include "app/toolbar/FilterField.h"
#include "app/toolbar/SearchableComboBox.h"
#include "core/CommandGate.h"
#include "platform/text/DisplayText.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/SharedContentViewController.h"
#include "resources/widgets/ContextBand.h"
#include "resources/widgets/NamedImages.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QToolButton>

namespace tidewright {

namespace {

constexpr int overflowMargin = 16; // what a toolbar adds to the button for commands that do not fit

} // namespace

ClusterToolBar::ClusterToolBar(
    KubeSplitViewController &state, PrimaryContentController &content, QWidget *parent)
    : QWidget(parent)
    , m_state(state)
    , m_content(content)
    , m_contexts(new SearchableComboBox(QStringLiteral("Contexts"), tr("context")))
    , m_accessBadge(new QToolButton)
    , m_namespaces(new SearchableComboBox(QStringLiteral("Namespaces"), tr("namespace")))
    , m_filter(new FilterField)
    , m_bar(new QToolBar)
{
    m_bar->setMovable(false);
    m_bar->setContextMenuPolicy(Qt::PreventContextMenu);
    m_bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_bar->setIconSize(QSize(16, 16));
    if (auto *overflow = m_bar->findChild<QToolButton *>(QStringLiteral("qt_toolbar_ext_button"))) {
        overflow->setIcon(
            namedImage(QStringLiteral("more"))); // the style's own is black on a dark ground too
        overflow->setToolTip(tr("More commands"));
    }
    m_bar->layout()->setContentsMargins(0, 0, 0, 0);
    m_bar->layout()->setSpacing(6);
    m_bar->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // gives way to the rest,
    m_bar->setMinimumWidth(
        style()->pixelMetric(QStyle::PM_ToolBarExtensionExtent) + overflowMargin); // not quite
    auto *separator = new QFrame;
    separator->setFrameShape(QFrame::VLine);
    separator->setForegroundRole(QPalette::Mid);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 6, 8, 6);
    row->setSpacing(6);
    row->addWidget(m_contexts);
    row->addWidget(m_accessBadge);
    row->addWidget(m_namespaces);
    row->addWidget(separator);
    row->addWidget(m_bar, 1);
    row->addWidget(m_filter);
    m_accessBadge->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_accessBadge->setIconSize(QSize(16, 16));
    m_accessBadge->setAutoRaise(true);
    m_accessBadge->hide();
    connect(m_accessBadge, &QToolButton::clicked, this, &ClusterToolBar::accessPreferencesRequested);
    setUpFilter();
    connect(&m_state, &KubeSplitViewController::contextListChanged, m_contexts,
        [this] { m_contexts->showList(m_state.contextList()); });
    m_namespaces->setOtherEntries(
        {tr("You may not list namespaces here; type one."), typed_namespaces::problem});
    connect(&m_state, &KubeSplitViewController::namespaceListChanged, this, &ClusterToolBar::showNamespaces);
    m_contexts->showList(m_state.contextList());
    m_namespaces->showList(m_state.namespaceList());
    connect(m_contexts, &QComboBox::textActivated, &m_state, &KubeSplitViewController::chooseContext);
    connect(m_namespaces, &QComboBox::textActivated, this, &ClusterToolBar::chooseNamespace);
    for (SearchableComboBox *list : {m_contexts, m_namespaces}) {
        // A list that is disabled while it loads would pass the focus on to the filter.
        connect(list, &QComboBox::textActivated, this,
            [this] { m_content.currentWidget()->setFocus(Qt::OtherFocusReason); });
    }
}

/// Where the cluster does not list them, the namespaces are those that are known otherwise.
void ClusterToolBar::showNamespaces()
{
    ChoiceList list = m_state.namespaceList();
    if (list.acceptsOthers) {
        const QString context = m_state.currentContext();
        list.entries += QStringList{m_state.kubeCtl().contents().nameSpace(context), list.selected}
            + typed_namespaces::of(context);
        list.entries.removeAll(allNamespaces); // stands above them
        list.entries.removeAll(QString());
        list.entries.removeDuplicates();
    }
    m_namespaces->showList(list, {allNamespaces});
}

void ClusterToolBar::chooseNamespace(const QString &name)
{
    if (m_state.namespaceList().acceptsOthers && name != allNamespaces) {
        typed_namespaces::remember(m_state.currentContext(), name);
    }
    m_state.chooseNamespace(name);
}

void ClusterToolBar::showAccessBadge(const ContextKey &context)
{
    const ContextAccess access
        = context.name.isEmpty() ? ContextAccess::Free : ContextPolicies::policy(context).access;
    const bool isReadOnly = access == ContextAccess::ReadOnly;
    m_accessBadge->setText(nameOf(access));
    m_accessBadge->setIcon(
        namedImage(isReadOnly ? QStringLiteral("read-only") : QStringLiteral("protected")));
    m_accessBadge->setToolTip(display_text::toolTip(isReadOnly
            ? readOnlyReason(context)
            : tr("Every change in the context %1 asks for its name (Preferences: Contexts).")
                  .arg(context.name)));
    m_accessBadge->setAccessibleName(tr("Access: %1").arg(nameOf(access)));
    m_accessBadge->setVisible(access != ContextAccess::Free);
}

void ClusterToolBar::setUpFilter()
{
    m_filter->setMinimumWidth(210);
    m_filter->setMaximumWidth(320);
    m_filter->installEventFilter(this);
    const auto serve = [this](SharedContentViewController *table) {
        table->setFilterField(m_filter);
        connect(table, &SharedContentViewController::filterChanged, this, [this, table] {
            if (table == m_content.shownTable() && table->filter() != m_filter->text()) {
                followShownTable();
            }
        });
    };
    for (SharedContentViewController *table : m_content.tables()) {
        serve(table);
    }
    connect(&m_content, &PrimaryContentController::tableAdded, this, serve);
    connect(m_filter, &QLineEdit::textChanged, this, [this](const QString &text) {
        if (auto *table = m_content.shownTable()) {
            table->setFilter(text);
            m_filter->filterApplied();
        }
    });
    connect(
        &m_content, &PrimaryContentController::shownTableChanged, this, &ClusterToolBar::followShownTable);
    followShownTable();
}

void ClusterToolBar::followShownTable()
{
    const auto *table = m_content.shownTable();
    m_filter->setText(table ? table->filter() : QString());
    if (!m_filter->hasFocus()) {
        m_filter->setCursorPosition(0); // of a long one the beginning tells most
    }
    m_filter->setEnabled(table);
    m_filter->setTable(table);
}

void ClusterToolBar::setCommands(const QList<QAction *> &commands)
{
    if (m_bar->actions() == commands) {
        return;
    }
    for (QAction *command : m_bar->actions()) {
        m_bar->removeAction(command);
    }
    m_bar->addActions(commands);
}

bool ClusterToolBar::eventFilter(QObject *watched, QEvent *event)
{
    const bool overriding = event->type() == QEvent::ShortcutOverride;
    if (watched != m_filter || (event->type() != QEvent::KeyPress && !overriding)) {
        return QWidget::eventFilter(watched, event);
    }
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (overriding && key == Qt::Key_Escape) {
        event->accept(); // here the key clears the filter, even while there is a load to stop
        return true;
    }
    if (overriding) {
        return QWidget::eventFilter(watched, event);
    }
    if (m_filter->takeKey(*static_cast<QKeyEvent *>(event))) {
        return true;
    }
    if (key == Qt::Key_Escape) {
        m_filter->clear();
    } else if (key != Qt::Key_Down && key != Qt::Key_Return && key != Qt::Key_Enter) {
        return QWidget::eventFilter(watched, event);
    }
    m_content.currentWidget()->setFocus(Qt::OtherFocusReason);
    auto *table = m_content.shownTable();
    if (table) {
        table->completeFilter();
    }
    if (key != Qt::Key_Escape && table && table->arrangedObjects().rowCount() > 0
        && !table->tableView().selectionModel()->hasSelection()) {
        table->tableView().selectRow(0); // what was looked for, ready for the next key
    }
    return true;
}

} // namespace tidewright
