// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/actionmenu/ActionLibrary.h"

#include "actions/ActionQueue.h"
#include "core/running/Console.h"
#include "platform/threads/MainQueue.h"

#include <QDesktopServices>
#include <QUrl>

#include <utility>

namespace tidewright {

void ActionLibrary::reload()
{
    m_afresh = true;
    refresh();
}

void ActionLibrary::refresh()
{
    if (std::exchange(m_loading, true)) {
        m_again = true;
    } else {
        load();
    }
}

void ActionLibrary::load()
{
    loadActionsInBackground(
        this, [this](const SharedActionTree &tree) { take(tree); },
        std::exchange(m_afresh, false) ? nullptr : m_tree);
}

void ActionLibrary::take(const SharedActionTree &tree)
{
    if (tree) { // else what was loaded before stays
        if (std::exchange(m_tree, tree) != tree) {
            collect(m_tree->nodes);
            Q_EMIT loaded();
        }
        postConsoleEntry(nullptr, QStringLiteral("Actions Loaded"), QString(), std::nullopt);
        for (const QString &problem : m_tree->problems) {
            postConsoleEntry(nullptr, QString(), QString(), makeConsoleError(problem));
        }
    }
    m_loading = m_again;
    if (std::exchange(m_again, false)) {
        load();
    }
}

void ActionLibrary::collect(const std::vector<ActionNode> &nodes)
{
    for (const ActionNode &node : nodes) {
        if (node.item) {
            m_items.insert(node.title, node.item);
        }
        collect(node.children);
    }
}

void ActionLibrary::showInFinder()
{
    // Another load may be busy in the folder just now.
    customActionQueue().post([] {
        const auto folder = actionsFolderURL({});
        mainQueue().post([folder] {
            if (folder && !QDesktopServices::openUrl(QUrl::fromLocalFile(*folder))) {
                postConsoleError(tr("No program could be found that opens the folder %1.").arg(*folder));
            }
        });
    });
}

} // namespace tidewright
