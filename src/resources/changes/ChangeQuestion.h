// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/changes/ClusterChange.h"

#include <functional>

class QWidget;

namespace tidewright {

// The questions before something that may change a cluster. In a protected context the first button can be
// chosen only after the context's name was typed. Main thread.

using Answered = std::function<void(bool confirmed)>;

ContextKey shownContext(const WindowState &window);

/// Why nothing may be changed in the window's context: a sentence; empty when changes are allowed.
QString changeObstacle(const WindowState &window);

/// What has to be typed before a change in a context: its name where it is protected, else nothing.
QString toBeTypedIn(const ContextKey &context);

/// What the command is called that shows an object to be edited, or else only to be read.
QString editTitle(const WindowState &window);

/// Asks, in every context, over `view`'s window (the main window when it is null); see showConfirmation.
/// `details` (optional) is owned from here on.
void confirmChange(QWidget *view, const ChangePlace &place, const QString &title, const QString &message,
    const QString &firstButton, QWidget *details, Answered answered);

/// For what asks nothing elsewhere: asks when `context` is protected, and answers true at once when it is
/// not.
void confirmWhereProtected(QWidget *view, const ContextKey &context, const QString &title,
    const QString &message, const QString &firstButton, QWidget *details, Answered answered);

} // namespace tidewright
