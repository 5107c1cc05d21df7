// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QTest>

/// A D-Bus session bus of the test's own.
class SessionBus
{
public:
    SessionBus()
    {
        m_daemon.start(QStringLiteral("dbus-daemon"),
            {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        while (m_daemon.waitForReadyRead() && !m_daemon.canReadLine()) { }
        address = QString::fromUtf8(m_daemon.readLine()).trimmed();
        QVERIFY(!address.isEmpty());
    }
    ~SessionBus()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    QString address;

private:
    QProcess m_daemon;
};
