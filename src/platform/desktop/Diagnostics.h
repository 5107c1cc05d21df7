// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <chrono>

namespace tidewright {

enum class DiagnosticStream { StandardOutput, StandardError };

/// Writes one plain line for whoever started the program from a terminal; never a message to the user, never
/// anything secret. Returns at once, from any thread, also when nobody reads the stream: a thread for each
/// stream does the writing. More than 4 MiB that wait are not kept; a line "N lines dropped" stands in for
/// what was lost.
void writeDiagnostic(const QString &line, DiagnosticStream stream = DiagnosticStream::StandardOutput);

/// Waits on any thread until all lines have been written, at most for `limit`. Returns whether they have.
/// Lines that still wait when the process ends are lost.
bool flushDiagnostics(std::chrono::milliseconds limit);

/// Has Qt's own warnings take the same way to the standard error. Main thread, before there are others.
void sendQtMessagesToDiagnostics();

} // namespace tidewright
