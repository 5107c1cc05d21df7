// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/text/LogLineText.h"

namespace tidewright {

/// Changes the look as an escape sequence asks for when it is one that selects a graphic rendition ("ESC [
/// ... m", ECMA-48; 256 and direct colours after ISO 8613-6, with semicolons or colons); others change
/// nothing. The sixteen colours are shades that can be read on the log's background. Any thread.
void applySgr(QStringView sequence, LogLook &look);

} // namespace tidewright
