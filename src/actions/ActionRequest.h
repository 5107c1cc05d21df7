// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/ActionForm.h"

#include <QMap>

#include <functional>
#include <variant>

namespace tidewright {

/// What a Python action asks the user.
struct ActionRequest
{
    enum class Kind { None, Dialog, Notification, Form };

    Kind kind = Kind::None;
    /// Texts by key: "title", "dialog_text", "ok_button_text", "cancel_button_text", "subtitle",
    /// "informative_text". What is absent has a default.
    QMap<QString, QString> state;
    std::vector<FormField> fields; ///< of a form
    QString place; ///< where the script acts, for the question; may be empty
};

/// Nothing (a notification), whether the first button was chosen (a dialog), or what was filled in (a form).
using ActionAnswer = std::variant<std::monostate, bool, FormValues>;

/// Shows a request over the main window. `answered` is called on the main thread; never when there is no
/// window, or when a form was not accepted. Main thread.
void showRequest(const ActionRequest &request, std::function<void(const ActionAnswer &)> answered);

} // namespace tidewright
