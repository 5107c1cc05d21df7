// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Json.h"

namespace tidewright::demo {

const json &at(const json &object, const std::string &pointer)
{
    static const json missing;
    const json *value = &object;
    size_t start = 1;
    while (start <= pointer.size()) {
        const size_t end = std::min(pointer.find('/', start), pointer.size());
        const std::string step = pointer.substr(start, end - start);
        if (value->is_object()) {
            const auto found = value->find(step);
            if (found == value->end()) {
                return missing;
            }
            value = &*found;
        } else if (value->is_array() && !step.empty() && step.find_first_not_of("0123456789") == step.npos
            && step.size() < 9 && std::stoul(step) < value->size()) {
            value = &(*value)[std::stoul(step)];
        } else {
            return missing;
        }
        start = end + 1;
    }
    return *value;
}

std::string textAt(const json &object, const std::string &pointer, const std::string &fallback)
{
    const json &value = at(object, pointer);
    return value.is_string() ? value.get<std::string>() : fallback;
}

long long numberAt(const json &object, const std::string &pointer, long long fallback)
{
    const json &value = at(object, pointer);
    return value.is_number() ? value.get<long long>() : fallback;
}

bool flagAt(const json &object, const std::string &pointer, bool fallback)
{
    const json &value = at(object, pointer);
    return value.is_boolean() ? value.get<bool>() : fallback;
}

std::string toText(const json &value)
{
    return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace tidewright::demo
