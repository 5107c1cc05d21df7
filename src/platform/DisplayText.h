// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <limits>

namespace tidewright {

/// Texts made fit for the places where they are shown. Pure functions, any thread.
namespace display_text {

/// For menus, buttons and tabs, which take a single ampersand for the mark of a mnemonic.
QString withoutMnemonics(QString text);

/// The first `characters` (code points) in the first `lines` of them, and an ellipsis when there is more;
/// else the whole text.
QString shortened(const QString &text, qsizetype characters, int lines = std::numeric_limits<int>::max());

} // namespace display_text

} // namespace tidewright
