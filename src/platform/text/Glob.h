// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/text/RegularExpression.h"

namespace tidewright {

/// A name pattern: a regular expression that covers the whole name, case-sensitively, in which "*" stands for
/// any text. Everything else keeps its meaning as a regular expression. After `compile`, matching is safe
/// from any thread.
class Glob
{
public:
    explicit Glob(const QString &pattern)
        : m_pattern(pattern)
    {
    }

    /// The pattern as it was written.
    QString pattern() const { return m_pattern; }
    /// The expression made of it; empty until `compile` has run.
    QString patternRegex() const { return m_patternRegex; }

    void compile();
    /// No name matches before `compile`, nor when the pattern makes no valid expression.
    bool matches(const QString &name) const;
    /// The same question for many names, with what a search needs made only once; for one thread at a
    /// time.
    RegularExpression::Searcher searcher() const { return m_expression.searcher(); }

private:
    QString m_pattern;
    QString m_patternRegex;
    RegularExpression m_expression;
};

} // namespace tidewright
