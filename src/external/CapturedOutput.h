// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/FileDescriptor.h"

#include <QByteArray>

namespace tidewright {

/// A place in memory that takes what a child prints, in the shape of a pipe: for children whose own children
/// (an editor, a terminal) go on when nobody reads any more. A real pipe would break then, and the next line
/// that such a program prints would end it. Takes up to 16 MiB; later writes fail without harm. Both ends are
/// closed when it cannot be made.
Pipe makeCapture();

/// What has been written to a capture until now.
QByteArray capturedBytes(const Pipe &capture);

} // namespace tidewright
