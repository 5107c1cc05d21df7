// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/text/RegularExpression.h"

namespace tidewright {

/// A web address found in a text.
struct DetectedLink
{
    TextRange range;
    QString text; ///< what stands in the range
};

/// The web addresses in `text`, from left to right: those that begin with http, https or ftp, and anything
/// that begins with letters and digits followed by a dot. Takes time in proportion to the text, whatever it
/// holds. Any thread.
std::vector<DetectedLink> detectLinks(const QString &text);

} // namespace tidewright
