// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/actionmenu/ActionMenu.h"

#include "app/actionmenu/ActionLibrary.h"
#include "app/actionmenu/ActionTarget.h"
#include "app/actionmenu/CustomActionCommands.h"
#include "platform/text/DisplayText.h"

namespace tidewright {

namespace {

void validate(CustomActionCommand &command, const ActionTarget *page)
{
    const QString obstacle = page ? page->actionObstacle(*command.actionItem) : QString();
    command.setEnabled(obstacle.isEmpty());
    command.setToolTip(display_text::toolTip(obstacle.isEmpty() ? command.actionItem->title() : obstacle));
}

} // namespace

ActionMenu::ActionMenu(QWidget &frame, ActionLibrary &library, std::function<ActionTarget *()> target)
    : QMenu(tr("&Actions"), &frame)
    , m_library(library)
    , m_target(std::move(target))
{
    setToolTipsVisible(true);
    connect(this, &QMenu::aboutToShow, this, &ActionMenu::validateMenu);
    connect(&library, &ActionLibrary::loaded, this, &ActionMenu::actionsLoaded);
    // Queued: the item that was chosen is triggered after the menu has closed.
    connect(
        this, &QMenu::aboutToHide, this,
        [this] {
            if (m_outdated) {
                actionsLoaded();
            }
        },
        Qt::QueuedConnection);
    buildActionMenu();
}

void ActionMenu::actionsLoaded()
{
    m_outdated = isVisible();
    if (!m_outdated) {
        buildActionMenu();
    }
}

void ActionMenu::buildActionMenu()
{
    clear();
    for (QMenu *group : findChildren<QMenu *>(QString(), Qt::FindDirectChildrenOnly)) {
        group->deleteLater();
    }
    addFixedHead();
    addNodes(*this, m_library.tree().nodes);
    for (CustomToolbarItem *item : std::as_const(m_toolbarItems)) {
        item->deleteLater();
    }
    m_toolbarItems.clear();
    Q_EMIT rebuilt();
    updateEnabled();
}

void ActionMenu::addFixedHead()
{
    m_runLast = addAction(tr("Run Last Action"), QKeySequence(tr("Ctrl+'")), this, [this] {
        if (ActionTarget *page = m_target()) {
            runLast(*page);
        }
    });
    addAction(QStringLiteral("Show in Finder"), QKeySequence(tr("Ctrl+Alt+R")), this,
        [] { ActionLibrary::showInFinder(); });
    addAction(
        QStringLiteral("Reload Actions"), QKeySequence(tr("Ctrl+Alt+A")), &m_library, &ActionLibrary::reload);
    for (QAction *command : actions()) {
        command->setAutoRepeat(false);
    }
    addSeparator();
}

void ActionMenu::addNodes(QMenu &menu, const std::vector<ActionNode> &nodes)
{
    for (const ActionNode &node : nodes) {
        if (node.item) {
            auto *item = new CustomMenuItem(node.item, &menu);
            connect(item, &QAction::triggered, this, [this, item] {
                if (ActionTarget *page = m_target()) {
                    page->runAction(item->actionItem);
                }
            });
            menu.addAction(item);
            continue;
        }
        auto *group = new QMenu(display_text::withoutMnemonics(node.title), &menu);
        group->setToolTipsVisible(true);
        group->menuAction()->setToolTip(display_text::toolTip(node.title));
        menu.addMenu(group);
        addNodes(*group, node.children);
    }
}

QAction *ActionMenu::toolbarItem(const QString &title)
{
    const auto item = m_library.customToolbarItems().value(title);
    if (!item) {
        return nullptr;
    }
    CustomToolbarItem *&button = m_toolbarItems[title];
    if (!button) {
        button = new CustomToolbarItem(item, this);
        connect(button, &QAction::triggered, this, [this, item] {
            if (ActionTarget *page = m_target()) {
                page->runAction(item);
            }
        });
        validate(*button, m_target());
    }
    return button;
}

/// As its files say now, if they have been read again since.
void ActionMenu::runLast(ActionTarget &page)
{
    const auto last = page.lastAction();
    const auto read = last ? m_library.customToolbarItems().value(last->title()) : nullptr;
    if (read && read->scriptURL() == last->scriptURL()) {
        page.runAction(read);
    } else {
        page.runLastAction();
    }
}

void ActionMenu::updateEnabled()
{
    ActionTarget *page = m_target();
    const auto last = page ? page->lastAction() : nullptr;
    m_runLast->setEnabled(last != nullptr);
    m_runLast->setToolTip(display_text::toolTip(last ? last->title() : QString()));
    m_runLast->setText(last ? QStringLiteral("Run \"%1\"").arg(display_text::withoutMnemonics(last->title()))
                            : QStringLiteral("Run Last Action"));
    if (page) {
        page->beginActionChecks();
    }
    for (CustomToolbarItem *button : std::as_const(m_toolbarItems)) {
        validate(*button, page);
    }
    if (isVisible()) {
        validateItems(); // the rows that one of them waits for may have come
    }
}

void ActionMenu::validateMenu()
{
    updateEnabled();
    validateItems();
}

void ActionMenu::validateItems()
{
    for (CustomMenuItem *item : findChildren<CustomMenuItem *>()) {
        validate(*item, m_target());
    }
}

} // namespace tidewright
