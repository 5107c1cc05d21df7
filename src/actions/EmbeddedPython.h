// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// Makes the Python that comes with the package findable, for the embedded interpreter and for every child:
/// sets `PYTHON_LIBRARY`, `PYTHONHOME` and `PYTHONPATH`. A package without a Python of its own leaves them as
/// they are, and the interpreter is looked for in its default places. Gives threads a stack on which scripts
/// can recurse. Once, before any thread or child exists.
void prepareEmbeddedPython();

/// Loads the interpreter that serves the whole process until its end, and says on the standard output which
/// it is. Returns at once: loading takes as long as a window takes to open, and goes on beside it. An
/// interpreter that cannot be loaded ends nothing; what is wrong with it is written there too. Further calls
/// do nothing.
void loadEmbeddedPython();

/// Waits until the interpreter is loaded, and ready for actions; has it loaded when nobody did. Empty, or
/// what is wrong with it (without a full stop). Never on the main thread.
QString waitForEmbeddedPython();

} // namespace tidewright
