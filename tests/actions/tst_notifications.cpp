// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Notifications.h"
#include "platform/threads/MainQueue.h"
#include "support/Patience.h"
#include "support/SessionBus.h"
#include "support/Table.h"

#include <QDBusConnection>
#include <QDBusContext>

using namespace tidewright;
using namespace Qt::StringLiterals;

/// A notification service that keeps what it is told, or refuses.
class FakeService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public Q_SLOTS:
    uint Notify(const QString &application, uint, const QString &, const QString &summary,
        const QString &body, const QStringList &, const QVariantMap &hints, int)
    {
        shown.append(application + u'|' + summary + u'|' + body);
        identifier = hints.value(u"x-tidewright-identifier"_s).toString();
        if (refuses) {
            sendErrorReply(QDBusError::Failed, u"no"_s);
        }
        return 7;
    }

public:
    bool refuses = false;
    QStringList shown;
    QString identifier;
};

class TestNotifications : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address.toUtf8()); }

    void delivery_data()
    {
        // whether a service is there and refuses, what it shows, what is shown elsewhere
        const Table<bool, bool, QString, QString> table;
        table.row("shown", true, false, u"Tidewright|<T>|sub &amp;\n&lt;b&gt;"_s, QString());
        table.row("refused", true, true, u"Tidewright|<T>|sub &amp;\n&lt;b&gt;"_s, u"<T>|sub &\n<b>"_s);
        table.row("no service", false, false, QString(), u"<T>|sub &\n<b>"_s);
    }
    void delivery()
    {
        const auto [there, refuses, service, elsewhere] = Table<bool, bool, QString, QString>::current();
        FakeService fake;
        fake.refuses = refuses;
        QDBusConnection desktop = QDBusConnection::connectToBus(m_bus.address, u"desktop"_s);
        desktop.registerObject(u"/org/freedesktop/Notifications"_s, &fake, QDBusConnection::ExportAllSlots);
        if (there) {
            QVERIFY(desktop.registerService(u"org.freedesktop.Notifications"_s));
        }
        QStringList fallback;
        setNotificationFallback(
            [&fallback](const QString &title, const QString &text) { fallback.append(title + u'|' + text); });
        deliverNotification({u"id"_s, u"<T>"_s, u"sub &"_s, u"<b>"_s});
        QTRY_VERIFY(fake.shown.size() == (there ? 1 : 0) && fallback.size() == (elsewhere.isEmpty() ? 0 : 1));
        QCOMPARE(fake.shown.value(0), service);
        QCOMPARE(fallback.value(0), elsewhere);
        QCOMPARE(fake.identifier, there ? u"id"_s : QString());
        desktop.unregisterService(u"org.freedesktop.Notifications"_s);
        QDBusConnection::disconnectFromBus(u"desktop"_s);
        setNotificationFallback({});
    }

private:
    SessionBus m_bus;
};

QTEST_GUILESS_MAIN(TestNotifications)
#include "tst_notifications.moc"
