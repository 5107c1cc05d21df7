// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

#include <optional>

namespace tidewright {

/// How a run of characters looks: the colour of its source unless the text itself asks for another (SGR
/// sequences, ECMA-48).
struct LogLook
{
    int source = 0;
    std::optional<QRgb> foreground = {};
    std::optional<QRgb> background = {};
    bool bold = false;
    bool italic = false;
    bool underlined = false;
    bool struckOut = false;
    bool inverse = false;

    friend bool operator==(const LogLook &, const LogLook &) = default;
};

} // namespace tidewright
