// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/LiveUpdates.h"

#include "platform/settings/UserDefaults.h"

namespace tidewright {

namespace {

const auto liveKey = QStringLiteral("liveUpdates");
const auto off = QStringLiteral("off");

} // namespace

LiveUpdates &LiveUpdates::shared()
{
    static LiveUpdates switchOfAll;
    return switchOfAll;
}

bool LiveUpdates::isOn() const
{
    return userDefaults().string(liveKey) != off;
}

void LiveUpdates::setOn(bool on)
{
    if (on != isOn()) {
        userDefaults().set(liveKey, on ? QStringLiteral("on") : off);
        Q_EMIT changed();
    }
}

} // namespace tidewright
