// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ApiCall.h"

#include <optional>
#include <string>
#include <vector>

namespace tidewright::demo {

/// All kinds that the cluster serves: those of its store, and what its pods and nodes use when it measures
/// that.
std::vector<const ResourceType *> servedTypes(const Cluster &cluster);

/// Nothing when the parts of a path are not below "apis/metrics.k8s.io/v1beta1", or nothing is measured.
std::optional<ResourcePath> parseMetricsPath(const std::vector<std::string> &parts, const Cluster &cluster);

/// Answers with the figures of the pods that run, per container, or of the nodes that are ready: one object
/// or a list of them. They belong to an object for good, and move a little every fifteen seconds unless the
/// cluster is still. Throws ApiError 404, and 405 for what does not read.
void readMetrics(const ApiCall &call);

} // namespace tidewright::demo
