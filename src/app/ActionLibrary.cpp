// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ActionLibrary.h"

#include "actions/ActionQueue.h"
#include "core/Console.h"
#include "platform/MainQueue.h"

#include <QDesktopServices>
#include <QUrl>

#include <utility>

namespace tidewright {

void ActionLibrary::reload()
{
    if (std::exchange(m_loading, true)) {
        m_again = true;
        return;
    }
    loadActionsInBackground(this, [this](const std::optional<ActionTree> &tree) { take(tree); });
}

void ActionLibrary::take(const std::optional<ActionTree> &tree)
{
    m_loading = false;
    if (std::exchange(m_again, false)) {
        reload();
        return;
    }
    if (!tree) {
        return; // what was loaded before stays
    }
    m_tree = *tree;
    collect(m_tree.nodes);
    Q_EMIT loaded();
    postConsoleEntry(nullptr, QStringLiteral("Actions Loaded"), QString(), std::nullopt);
    for (const QString &problem : m_tree.problems) {
        postConsoleEntry(nullptr, QString(), QString(), makeConsoleError(problem));
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
