// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ToolBarLayout.h"

#include "platform/UserDefaults.h"

namespace tidewright {

namespace {

const auto toolBarKey = QStringLiteral("toolbarItems");

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
    return stored ? stored->split(QLatin1Char('\n'), Qt::SkipEmptyParts) : defaultIdentifiers();
}

void ToolBarLayout::setIdentifiers(const QStringList &identifiers)
{
    userDefaults().set(toolBarKey, identifiers.join(QLatin1Char('\n')));
    Q_EMIT changed();
}

void ToolBarLayout::reset()
{
    userDefaults().remove(toolBarKey);
    Q_EMIT changed();
}

} // namespace tidewright
