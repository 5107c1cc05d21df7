// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/text/RegularExpression.h"
#include "pods/logs/store/LogStore.h"

namespace tidewright {

/// What a user looks for in a log: a text, or a regular expression in ICU's dialect. Matches what a line
/// shows, so colours inside of a word do not hide it. Immutable and cheap to copy; any thread.
class LogPattern
{
public:
    /// Matches nothing, and stands for no pattern.
    LogPattern() = default;
    LogPattern(const QString &text, bool caseSensitive, bool isRegularExpression);

    bool isEmpty() const { return m_text.isEmpty(); }
    /// False for a regular expression that is none.
    bool isValid() const { return m_isBytes || isEmpty() || m_expression.isValid(); }

    struct Matches
    {
        std::vector<LogRange> ranges; ///< in the line's bytes, from left to right
        bool cutOff = false; ///< the expression is too complicated for the line: there may be more
    };
    /// The matches in a line (without its end), at most `most`. An expression's match in a line
    /// of more than 64 KiB may be missed when it is longer than 4 KiB.
    Matches matches(QByteArrayView line, std::size_t most) const;
    /// The same for painting: gives an expression that backtracks up sooner.
    LogPattern quick() const;

    friend bool operator==(const LogPattern &a, const LogPattern &b)
    {
        return a.m_text == b.m_text && a.m_caseSensitive == b.m_caseSensitive
            && a.m_isExpression == b.m_isExpression;
    }

private:
    void findBytes(QByteArrayView line, std::size_t most, std::vector<LogRange> &found) const;
    void findExpression(QByteArrayView line, std::size_t most, Matches &result) const;

    QString m_text;
    bool m_caseSensitive = true;
    bool m_isExpression = false;
    bool m_isBytes = false; ///< looked for without decoding
    QByteArray m_bytes; ///< in lower case unless case matters
    RegularExpression m_expression;
};

} // namespace tidewright
