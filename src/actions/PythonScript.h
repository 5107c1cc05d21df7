// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/ActionRequest.h"
#include "actions/Script.h"

namespace tidewright {

/// A script that runs inside the embedded interpreter: its module "main" has a class `Action`, of which each
/// run makes an instance and calls its `run`. By raising an exception whose class is named OKDialog,
/// OKCancelDialog, Notification or FormDialog it asks for one, and its `_run_callback` gets the answer.
class PythonScript : public Script
{
public:
    explicit PythonScript(const QString &scriptURL);

    void runScript(std::shared_ptr<CustomActionItem> item, ActionEnvironment environment,
        QPointer<Console> console) override;

private:
    /// The module and the instance of the latest run. Touched with the interpreter's lock only.
    struct Loaded;
    /// A function of an instance with its arguments.
    struct Call;

    /// Loads the module of that folder afresh and makes the instance that `run` is called on; with the
    /// interpreter's lock. Posts what went wrong, and then returns false.
    bool load(const std::string &folder, const ActionEnvironment &environment, Call &call);
    /// Calls an instance's function, forwards what it logged, and shows what it asks for or what is wrong
    /// with it. With the interpreter's lock.
    void callPython(const std::shared_ptr<CustomActionItem> &item, const Call &call);
    /// Gives an answer to the instance of that run, on the custom action queue; to nobody when the action was
    /// started again since, and the console says so.
    static void callBack(const std::shared_ptr<CustomActionItem> &item, int run, const ActionAnswer &answer);

    std::shared_ptr<Loaded> m_loaded;
};

} // namespace tidewright
