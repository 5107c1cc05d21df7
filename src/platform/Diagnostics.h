// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// Writes one plain line to the application's standard output and flushes it. For whoever started the program
/// from a terminal; never a message to the user, never anything secret. Any thread.
void writeDiagnostic(const QString &line);

} // namespace tidewright
