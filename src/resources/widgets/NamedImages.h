// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QIcon>

namespace tidewright {

/// An image of the application package by its name, such as "NSStatusAvailable" or "pods-sidebar"; a null
/// icon when there is none. Images drawn in one colour (those whose name does not begin with a state) take
/// the palette's text colour. Main thread.
QIcon namedImage(const QString &name);

/// A colour by its name: the solarized palette ("solarized-base03" ...), and the system's "orange" and "red"
/// in a shade that reads well on the window's background. An invalid colour when there is none.
QColor namedColour(const QString &name);

/// Whether the application's palette is a dark one now.
bool isDarkPalette();

} // namespace tidewright
