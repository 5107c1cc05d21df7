// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/FileDescriptor.h"

#include <sys/types.h>

namespace tidewright {

/// A program beside the application that outlives it by a moment and ends the process groups it was told of:
/// what a child has started is no child of the application, and the kernel ends only those with it. Nobody's
/// child itself, in a session of its own. Where it cannot be started, groups are left to the kernel. Any
/// thread.
class GroupGuard
{
public:
    /// The one of this process, started at the first call.
    static const GroupGuard &instance();

    /// The group is to be killed when the application ends, however that happens.
    void watch(pid_t group) const { tell(group); }
    /// Its number may soon be a stranger's.
    void forget(pid_t group) const { tell(-group); }

private:
    GroupGuard();
    void tell(pid_t number) const;

    FileDescriptor m_socket;
};

} // namespace tidewright
