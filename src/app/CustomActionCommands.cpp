// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CustomActionCommands.h"

namespace tidewright {

namespace {

QString asMenuText(QString title)
{
    return title.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

CustomMenuItem::CustomMenuItem(std::shared_ptr<CustomActionItem> item, QObject *parent)
    : CustomActionCommand(std::move(item), parent)
{
    setText(asMenuText(actionItem->title()));
    setIcon(actionItem->menuIcon());
    setIconVisibleInMenu(true);
}

CustomToolbarItem::CustomToolbarItem(std::shared_ptr<CustomActionItem> item, QObject *parent)
    : CustomActionCommand(std::move(item), parent)
{
    setObjectName(actionItem->title());
    setText(asMenuText(actionItem->title()));
    setIconText(actionItem->title());
    setIcon(actionItem->icon());
}

} // namespace tidewright
