// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// Whether a line has as many fields as the kind. Any thread.
bool lineFits(const ResourceKind &kind, QByteArrayView line);

/// A new row from the line of one object, which fits. `nameSpace` is empty in tables that show one;
/// `moment` is when it was listed (seconds since 1970). Any thread.
Row newRow(const ResourceKind &kind, const QString &nameSpace, const QByteArray &line, double moment);

/// The row as the line, which fits, has it now: `previous` itself when nothing of it has changed. Any thread.
Row changedRow(const ResourceKind &kind, const Row &previous, const QByteArray &line);

} // namespace tidewright
