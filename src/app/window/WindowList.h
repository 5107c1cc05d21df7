// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>

class QAction;
class QMenu;

namespace tidewright {

class ClusterWindowFrame;

/// The entries for all cluster windows at the end of a menu, each of which brings its window to the front.
/// Those of `frame` are checked. Owned by the menu.
class WindowList : public QObject
{
    Q_OBJECT
public:
    WindowList(ClusterWindowFrame &frame, QMenu *menu);

private:
    void update();

    ClusterWindowFrame &m_frame;
    QMenu *m_menu;
    QList<QAction *> m_windows;
};

} // namespace tidewright
