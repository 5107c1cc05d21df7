// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QTextCharFormat>

namespace tidewright::console_style {

/// Arrowhead that leads from the date to the command; in the font's private-use area.
inline constexpr QChar separatorGlyph(0xE0B0);

/// The system's fixed-pitch font with one behind it that has the separator glyph; 12 units of 1/96 inch high.
QFont font();

/// The colours of each kind of text. A colour whose name is unknown is left unset. Main thread.
QTextCharFormat date();
QTextCharFormat separator();
QTextCharFormat text();
QTextCharFormat error();
/// A link without its target.
QTextCharFormat link();

} // namespace tidewright::console_style
