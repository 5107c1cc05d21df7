// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

#include <optional>

namespace tidewright {

// Desktop entries of the XDG application folders (freedesktop.org Desktop Entry and MIME Applications
// specifications), as the desktop's library reads them. That library keeps what it has read and notices
// changes by itself, within a moment. Any thread.

/// Whether there is an entry of that id, such as "org.kde.kate.desktop", which is not hidden and whose
/// program is there.
bool isApplicationInstalled(const QString &desktopId);

/// How a terminal that has a desktop entry is started.
struct DesktopTerminal
{
    QStringList command; ///< program and arguments of the entry, without placeholders for files; not empty
    QString execArgument; ///< what stands before the command that it is to run; may be empty
};

/// Whether any application is registered for the URL scheme.
bool hasSchemeHandler(const QString &scheme);
/// The user's application for the URL scheme, or else the first one registered; nothing without any, or
/// when its entry cannot be started.
std::optional<DesktopTerminal> schemeHandler(const QString &scheme);

/// Why no installed application can be found, when none of the XDG application folders can be listed; empty
/// else.
QString applicationFoldersProblem();

} // namespace tidewright
