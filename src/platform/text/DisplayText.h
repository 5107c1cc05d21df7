// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <limits>

namespace tidewright {

/// Texts made fit for the places where they are shown. Pure functions, any thread.
namespace display_text {

/// What comes from a cluster, with a replacement character for everything that would not be seen but move or
/// hide the text around it: control characters (line feed and tab stay), direction marks, line and paragraph
/// separators.
QString clean(const QString &text);

/// What of a name stands in a cell, a list, a menu, a button or a title: clean, at most its first 1,000
/// characters, which is four times what a name may have, so that no text costs more than a frame.
QString name(const QString &text);

/// Carriage returns and line feeds as they stand in a string literal, "\\r" and "\\n": for names of files.
QString withoutLineEnds(const QString &text);

/// Whether a terminal that the text is pasted into would take a part of it for a key: a control character
/// other than line feed and tab.
bool actsWhenPasted(const QString &text);

/// For menus, buttons and tabs, which take a single ampersand for the mark of a mnemonic: as `name` has it.
QString withoutMnemonics(const QString &text);

/// At most so many characters (code points) and so many lines of the text, with an ellipsis behind them when
/// something is left out.
QString shortened(const QString &text, qsizetype characters, int lines = std::numeric_limits<int>::max());

/// For tool tips, which take a text for mark-up when it looks like some: shown as it is, at most 4,000
/// characters and 60 lines of it, and clean. A long text comes back as an escaped paragraph that wraps, a
/// short one without mark-up unchanged, because screen readers read tool tips too.
QString toolTip(const QString &text);

} // namespace display_text

} // namespace tidewright
