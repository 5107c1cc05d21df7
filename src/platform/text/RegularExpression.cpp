// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/RegularExpression.h"

#include <unicode/regex.h>

#include <limits>

namespace tidewright {

namespace {

/// Bytes of backtracking state.
constexpr int32_t stackLimit = 8 * 1024 * 1024;

/// The caller's UTF-16 units as ICU sees them, without a copy.
icu::UnicodeString alias(QStringView text)
{
    return {false, text.utf16(), static_cast<int32_t>(text.size())};
}

} // namespace

RegularExpression::RegularExpression(const QString &pattern, int effort)
    : m_effort(effort)
{
    UErrorCode status = U_ZERO_ERROR;
    UParseError where;
    std::unique_ptr<icu::RegexPattern> compiled(icu::RegexPattern::compile(alias(pattern), where, status));
    if (U_SUCCESS(status)) {
        m_pattern = std::move(compiled);
    }
}

std::optional<TextRange> RegularExpression::firstMatch(QStringView text) const
{
    const Matches found = search(text, 0, 1, 0);
    return found.ranges.empty() ? std::nullopt : std::optional(found.ranges.front());
}

RegularExpression::Matches RegularExpression::allMatches(QStringView text, qsizetype from) const
{
    return search(text, from, std::numeric_limits<size_t>::max(), 0);
}

RegularExpression::Matches RegularExpression::nonEmptyMatches(
    QStringView text, qsizetype from, size_t most) const
{
    return search(text, from, most, 1);
}

RegularExpression RegularExpression::withEffort(int effort) const
{
    RegularExpression other = *this;
    other.m_effort = effort;
    return other;
}

RegularExpression::Matches RegularExpression::search(
    QStringView text, qsizetype from, size_t limit, qsizetype shortest) const
{
    return searcher().search(text, from, limit, shortest);
}

RegularExpression::Searcher RegularExpression::searcher() const
{
    return Searcher(*this);
}

RegularExpression::Searcher::Searcher(const RegularExpression &expression)
    : m_pattern(expression.m_pattern)
{
    if (!m_pattern) {
        return;
    }
    UErrorCode status = U_ZERO_ERROR;
    m_matcher.reset(m_pattern->matcher(status));
    if (m_matcher) {
        m_matcher->setTimeLimit(expression.m_effort, status);
        m_matcher->setStackLimit(stackLimit, status);
    }
    if (U_FAILURE(status)) {
        m_matcher.reset();
    }
}

RegularExpression::Searcher::~Searcher() = default;

RegularExpression::Matches RegularExpression::Searcher::search(
    QStringView text, qsizetype from, size_t limit, qsizetype shortest)
{
    Matches found;
    if (!m_matcher || text.size() > std::numeric_limits<int32_t>::max()) {
        found.cutOff = m_pattern != nullptr;
        return found;
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString input = alias(text);
    m_matcher->reset(input);
    bool more = m_matcher->find(from, status);
    while (more && U_SUCCESS(status)) {
        const qsizetype start = m_matcher->start(status);
        if (const qsizetype length = m_matcher->end(status) - start; length >= shortest) {
            found.ranges.push_back({start, length});
        }
        more = found.ranges.size() < limit && m_matcher->find(status);
    }
    found.cutOff = U_FAILURE(status);
    return found;
}

} // namespace tidewright
