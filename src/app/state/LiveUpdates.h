// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace tidewright {

/// Whether the tables of all windows follow every change in their cluster as it happens: a setting, on at
/// first. Main thread.
class LiveUpdates : public QObject
{
    Q_OBJECT
public:
    static LiveUpdates &shared();

    bool isOn() const;
    void setOn(bool on);

Q_SIGNALS:
    void changed();
};

} // namespace tidewright
