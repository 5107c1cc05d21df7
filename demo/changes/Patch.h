// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Json.h"

#include <string>

namespace tidewright::demo {

/// The object that a PATCH body makes of another. The content type says which of the three forms the body
/// has: JSON patch (RFC 6902), merge patch (RFC 7386) or Kubernetes' strategic merge patch, in which known
/// lists are merged by a key of their items. Throws ApiError 415 for other forms, 422 when the patch does not
/// apply.
json applyPatch(const std::string &contentType, const json &object, const json &patch);

} // namespace tidewright::demo
