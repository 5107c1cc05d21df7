// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

class QWidget;

namespace tidewright {

/// What is asked before something that cannot be undone. All texts are plain.
struct Question
{
    QString title;
    QString message = {}; ///< one too long for the screen scrolls
    QString yes; ///< the button that has it done
    /// The button that does no harm, which the return key and Escape press; empty: there is none.
    QString no = QStringLiteral("Cancel");
    /// Shown below the message, owned by the question from here on; may be null. One with a focus proxy is a
    /// form to fill in: it has the keyboard focus, and the return key presses `yes`.
    QWidget *accessory = nullptr;
    /// Unless empty, `yes` can be chosen only once the user has typed exactly that.
    QString toBeTyped = {};
    /// A third button, for something else to do with the same things; empty: there is none. It waits for no
    /// typing: what it leads to asks for itself. Then `otherChosen` is called, and nobody is answered.
    QString other = {};
    std::function<void()> otherChosen = {};
};

/// Whether `yes` was chosen.
using Answered = std::function<void(bool confirmed)>;

/// Asks over the window of `view`, or over the application's main window when there is no view. Returns at
/// once; `answered` is called later, and never when there is no window to ask in. Screen readers know the
/// dialog by the question's title, and have its message for the description. Main thread.
void showConfirmation(QWidget *view, const Question &question, Answered answered);

/// Installed at start-up by whoever knows the windows; yields null when there is none. Without it, or with
/// null, the active window is taken for the main one.
void setMainWindowLookup(std::function<QWidget *()> lookup);

} // namespace tidewright
