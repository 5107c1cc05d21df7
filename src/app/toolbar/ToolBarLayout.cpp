// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/toolbar/ToolBarLayout.h"

#include "platform/settings/UserDefaults.h"

#include <algorithm>

namespace tidewright {

namespace {

const auto toolBarKey = QStringLiteral("toolbarItems");

/// An identifier as one line: the title of an action is the name of a folder, which may hold anything.
QString toLine(QString identifier)
{
    return identifier.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('\n'), QLatin1String("\\n"));
}

QString fromLine(const QString &line)
{
    QString identifier;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar next = i + 1 < line.size() ? line[i + 1] : QChar();
        const bool isEscape
            = line[i] == QLatin1Char('\\') && (next == QLatin1Char('\\') || next == QLatin1Char('n'));
        i += isEscape ? 1 : 0;
        identifier += isEscape && next == QLatin1Char('n') ? QChar(QLatin1Char('\n')) : line[i];
    }
    return identifier;
}

} // namespace

QStringList ToolBarLayout::defaultIdentifiers()
{
    return {QStringLiteral("reloadToolbarItem"), QStringLiteral("viewLogsToolbarItem"),
        QStringLiteral("copyFileToolbarItem"), QStringLiteral("quickLookToolbarItem"),
        QStringLiteral("deleteToolbarItem")};
}

QStringList ToolBarLayout::identifiers() const
{
    const auto stored = userDefaults().string(toolBarKey);
    if (!stored) {
        return defaultIdentifiers();
    }
    QStringList identifiers = stored->split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    std::transform(identifiers.cbegin(), identifiers.cend(), identifiers.begin(), fromLine);
    return identifiers;
}

void ToolBarLayout::setIdentifiers(const QStringList &identifiers)
{
    QStringList lines(identifiers.size());
    std::transform(identifiers.cbegin(), identifiers.cend(), lines.begin(), toLine);
    userDefaults().set(toolBarKey, lines.join(QLatin1Char('\n')));
    Q_EMIT changed();
}

void ToolBarLayout::reset()
{
    userDefaults().remove(toolBarKey);
    Q_EMIT changed();
}

} // namespace tidewright
