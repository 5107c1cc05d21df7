// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ApplicationService.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFileInfo>

#include <chrono>
#include <future>
#include <memory>
#include <thread>

namespace tidewright {

namespace {

const auto serviceName = QStringLiteral("com.brindle.Tidewright");
const auto objectPath = QStringLiteral("/com/brindle/Tidewright");
const auto interfaceName = QStringLiteral("org.freedesktop.Application");
constexpr auto patience = std::chrono::seconds(3);
constexpr int millisecondsForAnswer = 1400; // twice, within that

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
    // A bus that hangs must not keep the window from opening.
    auto answer = std::make_shared<std::promise<Start>>();
    std::future<Start> answered = answer->get_future();
    std::thread([this, answer] { answer->set_value(takeName()); }).detach();
    return answered.wait_for(patience) == std::future_status::ready ? answered.get() : Start::First;
}

ApplicationService::Start ApplicationService::takeName()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return Start::First;
    }
    for (int attempt = 0; attempt < 2; ++attempt) { // the owner may be ending just now
        // The object first: whoever finds the name finds somebody who answers.
        bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots);
        if (bus.registerService(serviceName)) {
            return Start::First;
        }
        bus.unregisterObject(objectPath);
        QDBusMessage call = QDBusMessage::createMethodCall(
            serviceName, objectPath, interfaceName, QStringLiteral("Activate"));
        call << QVariantMap();
        const QDBusMessage reply = bus.call(call, QDBus::Block, millisecondsForAnswer);
        if (reply.type() == QDBusMessage::ReplyMessage) {
            return Start::Forwarded;
        }
    }
    return Start::Unanswered;
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
