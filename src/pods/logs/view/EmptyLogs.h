// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

class CombinedLogsViewController;

/// Why a logs window shows no line, while that is so. `isCleared`: the user has let the text go. Main thread.
QString emptyLogsText(const CombinedLogsViewController &logs, bool isCleared);

} // namespace tidewright
