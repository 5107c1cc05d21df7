// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace tidewright {

class ActionLibrary;
class KubeConfigWriter;
class ToolBarLayout;
class WebPages;

/// What all cluster windows share. Outlives them.
struct WindowServices
{
    KubeConfigWriter &writer;
    const WebPages &pages;
    ActionLibrary &actions;
    ToolBarLayout &toolBar;
};

} // namespace tidewright
