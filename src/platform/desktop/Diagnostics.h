// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

enum class DiagnosticStream { StandardOutput, StandardError };

/// Writes one plain line for whoever started the program from a terminal; never a message to the user, never
/// anything secret. Any thread; never waits for a reader: what a full pipe or a stopped terminal does not
/// take is lost. Not through stdio, where a write that blocks would hold a lock that others need.
void writeDiagnostic(const QString &line, DiagnosticStream stream = DiagnosticStream::StandardOutput);

/// Has Qt's own warnings take the same way to the standard error. Main thread, before there are others.
void sendQtMessagesToDiagnostics();

} // namespace tidewright
