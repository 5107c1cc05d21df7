// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Json.h"
#include "store/ResourceType.h"

#include <string>

namespace tidewright::demo {

/// Holds an object against the schema of its kind. Wrong types and missing required fields are always
/// refused; unknown fields when the level (the request's fieldValidation) is "Strict". Throws ApiError 400 or
/// 422.
void checkObject(const ResourceType &type, const json &object, const std::string &level);

/// The name must be there and be a DNS name. Throws ApiError 422.
void checkName(const ResourceType &type, const json &object);

} // namespace tidewright::demo
