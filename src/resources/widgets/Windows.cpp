// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/widgets/Windows.h"

#include <QWidget>

namespace tidewright {

void bringToFront(QWidget &window)
{
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace tidewright
