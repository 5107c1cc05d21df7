// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Json.h"

#include <string>

namespace tidewright::demo {

/// Recent clients send objects that they build themselves ("kubectl create job --from=...") in Kubernetes'
/// protobuf form: the bytes "k8s\0" and a runtime.Unknown message around the object. This reads the kinds
/// that kubectl creates in that way. Throws ApiError 415 for other kinds, 400 for bytes that are no such
/// message.
json objectFromProtobuf(const std::string &body);

} // namespace tidewright::demo
