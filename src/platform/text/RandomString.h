// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// That many characters, each drawn independently and uniformly from a to z and 0 to 9. Any thread.
QString randomString(int count);

} // namespace tidewright
