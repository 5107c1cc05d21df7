// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ApplicationService.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFileInfo>

#include <chrono>

namespace tidewright {

namespace {

const auto serviceName = QStringLiteral("com.brindle.Tidewright");
const auto objectPath = QStringLiteral("/com/brindle/Tidewright");
const auto interfaceName = QStringLiteral("org.freedesktop.Application");
constexpr auto patience = std::chrono::seconds(3);

/// Asking for a bus where there is none starts one on some systems.
bool hasSessionBus()
{
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")
        || QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus"));
}

} // namespace

ApplicationService::Start ApplicationService::start()
{
    if (!hasSessionBus()) {
        return Start::First;
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return Start::First;
    }
    // The object first: whoever finds the name finds somebody who answers.
    bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots);
    if (bus.registerService(serviceName)) {
        return Start::First;
    }
    bus.unregisterObject(objectPath);
    QDBusMessage call
        = QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName, QStringLiteral("Activate"));
    call << QVariantMap();
    const QDBusMessage answer
        = bus.call(call, QDBus::Block, static_cast<int>(std::chrono::milliseconds(patience).count()));
    return answer.type() == QDBusMessage::ReplyMessage ? Start::Forwarded : Start::Unanswered;
}

void ApplicationService::Activate(const QVariantMap &)
{
    Q_EMIT activated();
}

void ApplicationService::Open(const QStringList &, const QVariantMap &)
{
    Q_EMIT activated();
}

void ApplicationService::ActivateAction(const QString &, const QVariantList &, const QVariantMap &)
{
    Q_EMIT activated();
}

} // namespace tidewright
