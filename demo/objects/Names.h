// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

namespace tidewright::demo {

/// The same for the same text in every run, so that seeded names are.
std::uint64_t stableHash(const std::string &text);

/// Letters and digits as the API server appends them to generated names.
std::string nameSuffix(std::uint64_t hash, int length = 5);

} // namespace tidewright::demo
