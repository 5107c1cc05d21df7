// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/Glob.h"

namespace tidewright {

void Glob::compile()
{
    m_patternRegex = QLatin1Char('^') + m_pattern + QLatin1Char('$');
    m_patternRegex.replace(QLatin1Char('*'), QLatin1String(".*?"));
    m_expression = RegularExpression(m_patternRegex);
}

bool Glob::matches(const QString &name) const
{
    return m_expression.firstMatch(name).has_value();
}

} // namespace tidewright
