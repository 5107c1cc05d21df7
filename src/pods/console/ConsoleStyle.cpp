// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/console/ConsoleStyle.h"

#include "resources/widgets/NamedImages.h"

#include <QFontDatabase>
#include <QFontInfo>

namespace tidewright::console_style {

namespace {

const QString background = QStringLiteral("solarized-base03");
const QString bright = QStringLiteral("solarized-base2");
const QString blue = QStringLiteral("solarized-blue");

QTextCharFormat format(const QString &foregroundName, const QString &backgroundName)
{
    QTextCharFormat result;
    if (const QColor colour = namedColour(foregroundName); colour.isValid()) {
        result.setForeground(colour);
    }
    if (const QColor colour = namedColour(backgroundName); colour.isValid()) {
        result.setBackground(colour);
    }
    return result;
}

} // namespace

QFont font()
{
    constexpr qreal height = 12.0;
    QFont result = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // By its real name: an alias such as "monospace" would lose against the family that is there by its own
    // name.
    result.setFamilies({QFontInfo(result).family(), QStringLiteral("PowerlineSymbols")});
    result.setPointSizeF(height * 72 / 96);
    return result;
}

QTextCharFormat date()
{
    return format(bright, blue);
}

QTextCharFormat separator()
{
    return format(blue, background);
}

QTextCharFormat text()
{
    return format(bright, background);
}

QTextCharFormat error()
{
    return format(QStringLiteral("solarized-red"), background);
}

QTextCharFormat link()
{
    QTextCharFormat result = format(blue, background);
    result.setUnderlineStyle(QTextCharFormat::SingleUnderline);
    if (const QColor colour = namedColour(blue); colour.isValid()) {
        result.setUnderlineColor(colour);
    }
    return result;
}

} // namespace tidewright::console_style
