// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/changes/ClusterChange.h"
#include "resources/changes/Confirmation.h"

namespace tidewright {

// The questions before something that may change a cluster. In a protected context the first button can be
// chosen only after the context's name was typed. Main thread.

/// What has to be typed before a change in a context: its name where it is protected, else nothing.
QString toBeTypedIn(const ContextKey &context);

/// What the command is called that shows an object to be edited, or else only to be read.
QString editTitle(const WindowState &window);

/// Where objects are, and which when there are several: the first few of each namespace by name. `note`
/// stands between the two.
QString objectsText(
    const ChangePlace &place, const ResourceKind &kind, const ObjectNames &objects, const QString &note = {});

/// Asks, in every context, over `view`'s window (the main window when it is null); see showConfirmation.
void confirmChange(QWidget *view, const ChangePlace &place, Question question, Answered answered);

/// For what asks nothing elsewhere: asks when `context` is protected, and answers true at once when it is
/// not.
void confirmWhereProtected(
    QWidget *view, const ContextKey &context, const Question &question, const Answered &answered);

} // namespace tidewright
