// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/ResourceKind.h"

namespace tidewright {

/// Columns that every kind has.
Column nameColumn(int width = 260);
/// Ordered by time, the youngest first; unknown ages stand at the end.
Column ageColumn();

} // namespace tidewright
