// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ResourceType.h"

#include <optional>
#include <string>

namespace tidewright::demo {

/// The OpenAPI 2.0 document in the protobuf form of gnostic's openapi.v2 messages, which clients that
/// validate on their own ask for.
const std::string &openApiV2Protobuf();

/// The index of OpenAPI 3.0 documents, one per group and version. prefix is the path of the cluster,
/// "/demo-harbor".
std::string openApiV3Index(const std::string &prefix);

/// The document of "api/v1" or "apis/GROUP/VERSION". It says that PATCH knows fieldValidation, which makes
/// recent clients leave the validation to the server. Nothing when nothing is served there.
std::optional<std::string> openApiV3Document(const std::string &groupVersionPath);

} // namespace tidewright::demo
