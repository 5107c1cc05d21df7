// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/Script.h"

namespace tidewright {

/// A script that runs as a program of its own: in the background, where its output becomes a console entry,
/// or in a new terminal window. The file must be executable and begin with an interpreter line.
class BashScript : public Script
{
public:
    using Script::Script;
    void runScript(std::shared_ptr<CustomActionItem> item, ActionRun run) override;
};

} // namespace tidewright
