// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Names.h"

namespace tidewright::demo {

std::uint64_t stableHash(const std::string &text)
{
    std::uint64_t hash = 0xcbf29ce484222325ULL;
    for (const unsigned char c : text) {
        hash = (hash ^ c) * 0x100000001b3ULL;
    }
    // The low bits of the sum alone are too alike for neighbouring names.
    hash = (hash ^ (hash >> 31)) * 0x94d049bb133111ebULL;
    return hash ^ (hash >> 29);
}

std::string nameSuffix(std::uint64_t hash, int length)
{
    static const std::string letters = "bcdfghjklmnpqrstvwxz2456789";
    std::string suffix;
    for (int i = 0; i < length; ++i) {
        suffix += letters[hash % letters.size()];
        hash /= letters.size();
    }
    return suffix;
}

} // namespace tidewright::demo
