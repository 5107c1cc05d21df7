// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <unicode/uversion.h>

#include <memory>
#include <optional>
#include <vector>

U_NAMESPACE_BEGIN
class RegexMatcher;
class RegexPattern;
U_NAMESPACE_END

namespace tidewright {

/// A part of a text, in UTF-16 units.
struct TextRange
{
    qsizetype start = 0;
    qsizetype length = 0;

    qsizetype end() const { return start + length; }
    friend bool operator==(const TextRange &, const TextRange &) = default;
};

/// A compiled regular expression in ICU's dialect. Immutable and cheap to copy; searching is safe from any
/// thread and copies no text. An invalid pattern matches nothing and costs nothing. A search that backtracks
/// for too long, or too deep, is cut off and counts as no match.
class RegularExpression
{
public:
    /// How far a search may backtrack, in tens of thousands of steps: about five milliseconds on today's
    /// machines.
    static constexpr int usualEffort = 50;
    /// The same for what is done while somebody waits for a picture: half a millisecond.
    static constexpr int quickEffort = 5;
    /// For patterns of the system that cannot backtrack.
    static constexpr int unlimitedEffort = 0;

    struct Matches
    {
        std::vector<TextRange> ranges; ///< from left to right
        bool cutOff = false; ///< the search was given up behind the last range
    };

    /// Matches nothing.
    RegularExpression() = default;
    explicit RegularExpression(const QString &pattern, int effort = usualEffort);

    bool isValid() const { return m_pattern != nullptr; }
    /// The same expression with another limit for its searches.
    RegularExpression withEffort(int effort) const;

    std::optional<TextRange> firstMatch(QStringView text) const;
    /// Searches of many short texts, one after another, with what a search needs made only once. For one
    /// thread at a time.
    class Searcher;
    Searcher searcher() const;
    /// The matches that begin at `from` or behind. What stands before `from` is still seen by look-behind and
    /// "\b".
    Matches allMatches(QStringView text, qsizetype from = 0) const;
    /// The same without empty matches, and not more than `most`.
    Matches nonEmptyMatches(QStringView text, qsizetype from, size_t most) const;

private:
    Matches search(QStringView text, qsizetype from, size_t limit, qsizetype shortest) const;

    std::shared_ptr<const icu::RegexPattern> m_pattern;
    int m_effort = usualEffort;
};

class RegularExpression::Searcher
{
public:
    ~Searcher();

    /// Whether the expression matches somewhere in the text. A search that was cut off found nothing.
    bool matches(QStringView text) { return !search(text, 0, 1, 0).ranges.empty(); }

private:
    friend RegularExpression;
    explicit Searcher(const RegularExpression &expression);
    Matches search(QStringView text, qsizetype from, size_t limit, qsizetype shortest);

    std::shared_ptr<const icu::RegexPattern> m_pattern; // the matcher's
    std::unique_ptr<icu::RegexMatcher> m_matcher; // null when there is no pattern, or no memory for it
};

} // namespace tidewright
