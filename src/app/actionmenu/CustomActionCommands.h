// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/CustomActionItem.h"

#include <QAction>

namespace tidewright {

/// A command that stands for a custom action: a menu item or a button of the toolbar.
class CustomActionCommand : public QAction
{
    Q_OBJECT
public:
    CustomActionCommand(std::shared_ptr<CustomActionItem> item, QObject *parent)
        : QAction(parent)
        , actionItem(std::move(item))
    {
    }

    const std::shared_ptr<CustomActionItem> actionItem;
};

class CustomMenuItem : public CustomActionCommand
{
    Q_OBJECT
public:
    CustomMenuItem(std::shared_ptr<CustomActionItem> item, QObject *parent);
};

/// Its object name is its identifier, the action's title.
class CustomToolbarItem : public CustomActionCommand
{
    Q_OBJECT
public:
    CustomToolbarItem(std::shared_ptr<CustomActionItem> item, QObject *parent);
};

} // namespace tidewright
