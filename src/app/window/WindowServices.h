// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tidewright {

class ActionLibrary;
class UserKubeConfig;
class ToolBarLayout;
class WebPages;

/// What all cluster windows share. Outlives them.
struct WindowServices
{
    UserKubeConfig &userFile;
    const WebPages &pages;
    ActionLibrary &actions;
    ToolBarLayout &toolBar;
};

} // namespace tidewright
