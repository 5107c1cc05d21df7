// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Notifications.h"

#include "platform/desktop/Diagnostics.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>

namespace tidewright {

namespace {

constexpr int answerLimit = 5000; // milliseconds
constexpr qsizetype longestText = 2000;

NotificationFallback &fallback()
{
    static NotificationFallback function;
    return function;
}

void showElsewhere(const UserNotification &notification)
{
    if (fallback()) {
        fallback()(notification.title, notification.text());
    } else {
        writeDiagnostic(
            QStringLiteral("A notification could not be shown."), DiagnosticStream::StandardError);
    }
}

/// The body may hold mark-up, so what would be taken for some is escaped.
QString asBody(QString text)
{
    return text.replace(QLatin1Char('&'), QLatin1String("&amp;"))
        .replace(QLatin1Char('<'), QLatin1String("&lt;"))
        .replace(QLatin1Char('>'), QLatin1String("&gt;"));
}

QDBusMessage notifyCall(const UserNotification &notification)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"), QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("Notify"));
    const QString desktopEntry = QStringLiteral("com.brindle.Tidewright");
    const QString application = QStringLiteral("Tidewright");
    const QString summary = notification.title.isEmpty() ? application : notification.title;
    const QVariantMap hints{{QStringLiteral("desktop-entry"), desktopEntry},
        {QStringLiteral("x-tidewright-identifier"), notification.identifier}};
    constexpr uint replacesNone = 0;
    constexpr int serversOwnTimeout = -1;
    call << application << replacesNone << desktopEntry << summary.left(longestText)
         << asBody(notification.text().left(longestText)) << QStringList() << hints << serversOwnTimeout;
    return call;
}

} // namespace

QString UserNotification::text() const
{
    QStringList lines{subtitle, informativeText};
    lines.removeAll(QString());
    return lines.join(QLatin1Char('\n'));
}

void setNotificationFallback(NotificationFallback function)
{
    fallback() = std::move(function);
}

void deliverNotification(const UserNotification &notification)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        showElsewhere(notification);
        return;
    }
    auto *watcher = new QDBusPendingCallWatcher(
        bus.asyncCall(notifyCall(notification), answerLimit), QCoreApplication::instance());
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher, notification] {
        watcher->deleteLater();
        if (const QDBusPendingReply<uint> reply = *watcher; reply.isError()) {
            showElsewhere(notification);
        }
    });
}

} // namespace tidewright
