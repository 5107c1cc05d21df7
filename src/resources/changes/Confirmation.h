// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace tidewright {

/// Asks before something that cannot be undone: a warning over the window of `view` (or over the
/// application's main window when there is no view), with the buttons in the given order. Returns at once;
/// `completion` is told later whether the first button was chosen, and never when there is no window to ask
/// in. Without a `secondButton` (empty) there is only the first; with one, the safe second button is the
/// default. A message too long for the screen scrolls. `accessory` (optional) is shown below the text and
/// owned from here on. One with a focus proxy is a form to fill in: it has the keyboard focus, and the first
/// button is the default. Main thread.
void showConfirmation(QWidget *view, const QString &title, const QString &message, const QString &firstButton,
    const QString &secondButton, QWidget *accessory, std::function<void(bool first)> completion);

/// Installed at start-up by whoever knows the windows; yields null when there is none. Without it, or with
/// null, the active window is taken for the main one.
void setMainWindowLookup(std::function<QWidget *()> lookup);

} // namespace tidewright
