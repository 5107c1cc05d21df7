// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <limits>

namespace tidewright {

/// Texts made fit for the places where they are shown. Pure functions, any thread.
namespace display_text {

/// For menus, buttons and tabs, which take a single ampersand for the mark of a mnemonic.
QString withoutMnemonics(QString text);

/// At most so many characters (code points) and so many lines of the text, with an ellipsis behind them when
/// something is left out.
QString shortened(const QString &text, qsizetype characters, int lines = std::numeric_limits<int>::max());

} // namespace display_text

} // namespace tidewright
