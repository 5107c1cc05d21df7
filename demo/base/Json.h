// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace tidewright::demo {

using json = nlohmann::json;

/// The value at a JSON pointer such as "/spec/replicas", or null when any step of the way is missing.
const json &at(const json &object, const std::string &pointer);

/// Text, integer or flag at a JSON pointer; the fallback when it is missing or of another type.
std::string textAt(const json &object, const std::string &pointer, const std::string &fallback = {});
long long numberAt(const json &object, const std::string &pointer, long long fallback = 0);
bool flagAt(const json &object, const std::string &pointer, bool fallback = false);

/// JSON text; bytes that are not UTF-8 become replacement characters instead of an exception.
std::string toText(const json &value);

} // namespace tidewright::demo
