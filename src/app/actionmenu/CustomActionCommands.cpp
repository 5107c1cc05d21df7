// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/actionmenu/CustomActionCommands.h"

#include "platform/text/DisplayText.h"

namespace tidewright {

CustomMenuItem::CustomMenuItem(std::shared_ptr<CustomActionItem> item, QObject *parent)
    : CustomActionCommand(std::move(item), parent)
{
    setText(display_text::withoutMnemonics(actionItem->title()));
    setIcon(actionItem->menuIcon());
    setIconVisibleInMenu(true);
}

CustomToolbarItem::CustomToolbarItem(std::shared_ptr<CustomActionItem> item, QObject *parent)
    : CustomActionCommand(std::move(item), parent)
{
    setObjectName(actionItem->title());
    setText(display_text::withoutMnemonics(actionItem->title()));
    setIconText(actionItem->title());
    setIcon(actionItem->icon());
}

} // namespace tidewright
