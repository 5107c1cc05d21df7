// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

namespace tidewright::demo {

std::string base64(const std::string &bytes);

} // namespace tidewright::demo
