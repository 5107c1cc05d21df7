// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>

namespace tidewright {

/// Which commands stand in the toolbars, and in which order: identifiers of standard commands
/// ("reloadToolbarItem") and titles of custom actions. Kept in the settings under "toolbarItems", one a line;
/// "\n" and "\\" stand for a line feed and a backslash in them. The same for all windows. Main thread.
class ToolBarLayout : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    static QStringList defaultIdentifiers();
    /// Those chosen by the user, else the default ones. Some may be of actions that are not there.
    QStringList identifiers() const;
    void setIdentifiers(const QStringList &identifiers);
    /// Back to the default.
    void reset();

Q_SIGNALS:
    void changed();
};

} // namespace tidewright
