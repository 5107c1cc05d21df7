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

    void runScript(std::shared_ptr<CustomActionItem> item, ActionRun run) override;

private:
    /// What was started with, and the module and the instance made for it. Touched with the interpreter's
    /// lock only; kept by whoever may still call its instance.
    struct Run;
    /// A function of a run's instance with its arguments.
    struct Call;

    /// Loads the module of that folder afresh; with the interpreter's lock. Posts what went wrong, and then
    /// returns false.
    static bool load(const std::string &folder, Run &run);
    /// The same for the instance that `run` is called on.
    static bool make(Run &run);
    /// Calls an instance's function, forwards what it logged, and shows what it asks for or what is wrong
    /// with it. With the interpreter's lock.
    static void callPython(const Call &call);
    /// Gives an answer to the run that asked, on the custom action queue. So it acts where the question said,
    /// also when the action was started elsewhere since.
    static void callBack(const std::shared_ptr<Run> &run, const ActionAnswer &answer);

    std::shared_ptr<Run> m_latest; ///< its module and instance stay until the next run begins
};

} // namespace tidewright
