// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/Cluster.h"

#include <optional>
#include <string>
#include <vector>

namespace tidewright::demo {

/// The documents from which a client learns what is served: /version, /api, /apis and the lists of resources.
/// Nothing when the path is none of them.
///
/// Clients older than 1.21 know cron jobs in batch/v1beta1 only and newer ones start jobs from batch/v1 only,
/// so the user agent decides in which version of the group a kind with an older one is listed. Objects are
/// served in both.
std::optional<std::string> discoveryText(
    const std::vector<std::string> &path, const std::string &userAgent, const Cluster &cluster);

} // namespace tidewright::demo
