// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/LinkDetection.h"

namespace tidewright {

namespace {

const QString &linkPattern()
{
    static const QString pattern
        = QString::fromUtf8("(?xi)\n"
                            R"re((?:(?:https?|ftp):\/\/|\b(?:[a-z\d]+\.)))re"
                            R"re((?:(?:[^\s()<>]+|\((?:[^\s()<>]+|(?:\([^\s()<>]+\)))?\))+)re"
                            R"re((?:\((?:[^\s()<>]+|(?:\(?:[^\s()<>]+\)))?\)|)re"
                            R"re([^\s`!()\[\]{};:'".,<>?«»“”‘’]))?)re");
    return pattern;
}

/// The link pattern repeats runs of characters, so a failing end is tried for every way of cutting the text
/// into runs: that takes for ever behind twenty full stops. Repeating single characters leaves one way, tries
/// the same ends in the same order, and so finds the same links.
QString withoutNestedRepetition(QString pattern)
{
    return pattern.replace(
        QLatin1String(R"re((?:(?:[^\s()<>]+|\()re"), QLatin1String(R"re((?:(?:[^\s()<>]|\()re"));
}

} // namespace

std::vector<DetectedLink> detectLinks(const QString &text)
{
    static const RegularExpression links(linkPattern(), 2);
    static const RegularExpression patientLinks(withoutNestedRepetition(linkPattern()), 1000);
    RegularExpression::Matches found = links.allMatches(text);
    if (found.cutOff) {
        const qsizetype from = found.ranges.empty() ? 0 : found.ranges.back().end();
        const RegularExpression::Matches others = patientLinks.allMatches(text, from);
        found.ranges.insert(found.ranges.end(), others.ranges.begin(), others.ranges.end());
    }
    std::vector<DetectedLink> result;
    result.reserve(found.ranges.size());
    for (const TextRange &range : found.ranges) {
        result.push_back({range, text.mid(range.start, range.length)});
    }
    return result;
}

} // namespace tidewright
