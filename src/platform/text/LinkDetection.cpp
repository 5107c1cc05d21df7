// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/LinkDetection.h"

namespace tidewright {

namespace {

constexpr int effort = 1000;

/// Repeats single characters, never runs of them: a failing end would be tried for every way of cutting the
/// text into runs, for ever behind twenty full stops.
QString linkPattern()
{
    return QString::fromUtf8("(?xi)\n"
                             R"re((?:(?:https?|ftp):\/\/|\b(?:[a-z\d]+\.)))re"
                             R"re((?:(?:[^\s()<>]|\((?:[^\s()<>]+|(?:\([^\s()<>]+\)))?\))+)re"
                             R"re((?:\((?:[^\s()<>]+|(?:\(?:[^\s()<>]+\)))?\)|)re"
                             R"re([^\s`!()\[\]{};:'".,<>?«»“”‘’]))?)re");
}

} // namespace

std::vector<DetectedLink> detectLinks(const QString &text)
{
    static const RegularExpression links(linkPattern(), effort);
    std::vector<DetectedLink> result;
    for (const TextRange &range : links.allMatches(text).ranges) {
        result.push_back({range, text.mid(range.start, range.length)});
    }
    return result;
}

} // namespace tidewright
