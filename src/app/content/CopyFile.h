// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tidewright {

class PodController;

/// The command Copy File: asks which files to copy into the first of the chosen containers, and where to, and
/// copies them there if the window still shows that place. No container is chosen any more then. Without one,
/// or where nothing may be changed, only the console says so. Main thread.
void copyFileDialog(PodController &pods);

} // namespace tidewright
