// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

namespace tidewright {

/// Shows a window in front of the others, whatever state it was in. Main thread.
void bringToFront(QWidget &window);

} // namespace tidewright
