// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Base64.h"

#include <openssl/evp.h>

namespace tidewright::demo {

std::string base64(const std::string &bytes)
{
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char *>(text.data()),
        reinterpret_cast<const unsigned char *>(bytes.data()), int(bytes.size()));
    text.resize(size_t(size));
    return text;
}

} // namespace tidewright::demo
