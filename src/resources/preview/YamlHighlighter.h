// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSyntaxHighlighter>

namespace tidewright {

/// Colours the YAML that kubectl prints: keys, strings, numbers and constants, comments.
class YamlHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT
public:
    using QSyntaxHighlighter::QSyntaxHighlighter;

protected:
    void highlightBlock(const QString &line) override;
};

} // namespace tidewright
