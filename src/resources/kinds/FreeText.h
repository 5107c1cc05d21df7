// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// Lines of kinds with a `freeTextField`, behind which a time stands. Pure functions, any thread.
namespace free_text {

/// The lines of a listing with those that are parts of one object's line put together: a line goes on with
/// the following ones until it has all its `fields` and a time behind the text. All are parts of that
/// listing, in its order; one that has no end within 200 lines, or too few fields before the text, stays as
/// it is.
std::vector<QByteArrayView> wholeLines(
    const std::vector<QByteArrayView> &lines, std::size_t textField, std::size_t fields);

/// The line of one object with as many fields as it must have: line ends and tabs in the text are blanks. A
/// line with too few fields comes back as it is.
QByteArray onOneLine(QByteArrayView line, std::size_t textField, std::size_t fields);

} // namespace free_text

} // namespace tidewright
