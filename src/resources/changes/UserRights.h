// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/kinds/ObjectName.h"
#include "resources/kinds/ResourceKind.h"

namespace tidewright {

/// What commands do, as far as the right to do it goes.
enum class Deed {
    List,
    Delete,
    Edit,
    Change, ///< restart, roll back, pause, cordon, make the default ...
    Scale,
    RunJob,
    OpenShell,
    CopyFiles,
    ForwardPort,
    ReadLogs,
    ReadValue, ///< of a secret
    Create, ///< objects of any kind
    Apply, ///< the same
};

/// Why a command cannot be given where the window is: nothing may be changed in its context, or the cluster
/// does not let the user do that to any of these objects (none: to objects of the kind). A sentence; empty
/// when nothing is known to stand in the way, and kubectl will tell. Main thread.
QString deedObstacle(
    WindowState &window, const ResourceKind &kind, Deed deed, const ObjectNames &objects = {});
/// The same for what does not depend on a kind: creating and applying, and what is done to pods.
QString deedObstacle(WindowState &window, Deed deed);
/// Of that, what the cluster does not let the user do.
QString rightsObstacle(
    WindowState &window, const ResourceKind &kind, Deed deed, const ObjectNames &objects = {});

} // namespace tidewright
