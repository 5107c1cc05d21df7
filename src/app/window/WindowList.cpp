// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/WindowList.h"

#include "app/state/KubeSplitViewController.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "platform/text/DisplayText.h"
#include "resources/widgets/Windows.h"

#include <QAction>
#include <QApplication>
#include <QMenu>

namespace tidewright {

WindowList::WindowList(ClusterWindowFrame &frame, QMenu *menu)
    : QObject(menu)
    , m_frame(frame)
    , m_menu(menu)
{
    connect(menu, &QMenu::aboutToShow, this, &WindowList::update);
    update();
}

void WindowList::update()
{
    qDeleteAll(m_windows);
    m_windows.clear();
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *frame = qobject_cast<ClusterWindowFrame *>(widget);
        if (!frame) {
            continue;
        }
        const MainWindowController *page = frame->currentPage(); // null while the window is being built
        const QString context = page ? page->state().currentContext() : QString();
        const QString entry
            = frame->windowTitle() + (context.isEmpty() ? QString() : QStringLiteral(" — ") + context);
        QAction *action = m_menu->addAction(
            display_text::withoutMnemonics(entry), frame, [frame] { bringToFront(*frame); });
        action->setCheckable(true);
        action->setChecked(frame == &m_frame);
        m_windows.append(action);
    }
}

} // namespace tidewright
