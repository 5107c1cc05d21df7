// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>

namespace tidewright {

/// A message to the user that needs no answer. Any text may be empty.
struct UserNotification
{
    QString identifier; ///< a UUID in text form
    QString title;
    QString subtitle;
    QString informativeText;

    /// What stands below the title: subtitle and informative text, each on lines of its own.
    QString text() const;
};

/// Hands a notification to the desktop's notification service (org.freedesktop.Notifications on the session
/// bus, of the Desktop Notifications Specification) and returns at once. Where there is no such service, or
/// it refuses or does not answer within seconds, the fallback shows the notification instead. Main thread.
void deliverNotification(const UserNotification &notification);

/// Shows plain text where the desktop shows none; called on the main thread. Installed at start-up.
using NotificationFallback = std::function<void(const QString &title, const QString &text)>;
void setNotificationFallback(NotificationFallback fallback);

} // namespace tidewright
