// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

#include <mutex>
#include <string>
#include <vector>

namespace tidewright::demo {

/// Changes to the pods of namespace "fleet", for loads: states and restarts change, pods go and others come
/// in their place. The n-th change is the same in every run; what other objects say of these pods stays as it
/// was. Any thread.
class PodLoad
{
public:
    explicit PodLoad(ObjectStore &store);

    /// That many changes at once; none when the namespace has no pods.
    void change(size_t count);

    /// That many a second from now on, on a thread that ends with the process.
    void start(int perSecond);

private:
    void changeOne();
    void changeState(const std::string &name, std::uint64_t chance);
    void removePod(size_t index);
    void createSuccessor();

    ObjectStore &m_store;
    std::mutex m_mutex;
    std::vector<std::string> m_names;
    std::string m_removed; ///< the pod that went and has no successor yet, as JSON
    std::uint64_t m_turn = 0;
};

} // namespace tidewright::demo
