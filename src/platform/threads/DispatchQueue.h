// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace tidewright {

/// A concurrent queue: every task starts at once, on an idle thread of the queue or on a new one, so that a
/// blocked task never keeps another waiting. Threads that stay idle for a while end. Posting is safe from any
/// thread.
///
/// A QThreadPool with a limit out of reach does the same in 15 lines (200 blocked tasks ran at once, 500
/// short ones took 3 threads), but ThreadSanitizer cannot see Qt's locks: it would report whatever a task
/// carries.
class DispatchQueue
{
public:
    /// `label` names the threads (the kernel shows its first 15 bytes).
    explicit DispatchQueue(std::string label);

    void post(std::function<void()> task);

private:
    struct State;
    std::shared_ptr<State> m_state;
};

} // namespace tidewright
