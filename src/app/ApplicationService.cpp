// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ApplicationService.h"

#include "app/kubeconfig/KubeConfigList.h"
#include "platform/settings/AtomicFile.h"
#include "platform/settings/UserDefaults.h"

#include <QCryptographicHash>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QFileInfo>
#include <QGuiApplication>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>

namespace tidewright {

namespace {

const auto serviceName = QStringLiteral("com.brindle.Tidewright");
const auto objectPath = QStringLiteral("/com/brindle/Tidewright");
const auto interfaceName = QStringLiteral("org.freedesktop.Application");
const auto kubeConfigKey = QStringLiteral("tidewright-kubeconfig");
constexpr auto patience = std::chrono::seconds(3);
constexpr int millisecondsForAnswer = 1400; // twice, within that
constexpr qsizetype digits = 32;

/// Asking for a bus where there is none starts one on some systems.
bool hasSessionBus()
{
    return !qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")
        || QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus"));
}

/// The name that only starts of the same build, with the same settings, on the same display look for.
QString ownName()
{
    const FileIdentity program = FileIdentity::at(QByteArrayLiteral("/proc/self/exe"));
    const QByteArray whole = QByteArrayList{userSettingsFile().toUtf8(),
        QGuiApplication::platformName().toUtf8(), qgetenv("DISPLAY"), qgetenv("WAYLAND_DISPLAY"),
        QByteArray::number(quint64(program.device)), QByteArray::number(quint64(program.inode)),
        QByteArray::number(qint64(program.size)), QByteArray::number(qint64(program.modifiedSeconds)),
        QByteArray::number(qint64(program.modifiedNanoseconds))}
                                 .join('\0');
    const QByteArray hash = QCryptographicHash::hash(whole, QCryptographicHash::Sha256).toHex().left(digits);
    return serviceName + QLatin1String(".At") + QLatin1String(hash);
}

/// Whether the owner of the name took over what this start was asked for.
bool handOver(const QDBusConnection &bus, const QString &name)
{
    const auto kubeConfig = kubeconfig_list::ofEnvironment();
    if (!kubeConfig) {
        return false;
    }
    QDBusMessage call
        = QDBusMessage::createMethodCall(name, objectPath, interfaceName, QStringLiteral("Activate"));
    call << QVariantMap{{kubeConfigKey, *kubeConfig}};
    return bus.call(call, QDBus::Block, millisecondsForAnswer).type() == QDBusMessage::ReplyMessage;
}

} // namespace

/// What the thread that talks to the bus shares with the service, which does not wait for its end.
struct ApplicationService::Link
{
    /// Puts the service on the bus, unless it is gone.
    bool expose(QDBusConnection bus)
    {
        const std::lock_guard lock(mutex);
        return service && bus.registerObject(objectPath, service, QDBusConnection::ExportAllSlots);
    }

    const QString name;
    std::mutex mutex;
    ApplicationService *service; ///< null when it is gone
    std::atomic<bool> isWaitedFor = true; ///< the start has not been decided without the bus
};

ApplicationService::ApplicationService(QObject *parent)
    : QObject(parent)
    , m_link(new Link{ownName(), {}, this})
{
}

ApplicationService::~ApplicationService()
{
    const std::lock_guard lock(m_link->mutex);
    m_link->service = nullptr;
}

ApplicationService::Start ApplicationService::start()
{
    if (!hasSessionBus()) {
        return Start::First;
    }
    // A bus that hangs must not keep the window from opening.
    std::promise<Start> answer;
    std::future<Start> answered = answer.get_future();
    std::thread([link = m_link, answer = std::move(answer)]() mutable {
        answer.set_value(takeName(*link));
    }).detach();
    if (answered.wait_for(patience) == std::future_status::ready) {
        return answered.get();
    }
    m_link->isWaitedFor = false;
    return Start::First;
}

ApplicationService::Start ApplicationService::takeName(Link &link)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return Start::First;
    }
    for (int attempt = 0; attempt < 2; ++attempt) { // the owner may be ending just now
        // The object first: whoever finds the name finds somebody who answers.
        if (!link.expose(bus)) {
            return Start::First;
        }
        if (bus.registerService(link.name)) {
            bus.interface()->registerService(serviceName, QDBusConnectionInterface::QueueService);
            return Start::First;
        }
        bus.unregisterObject(objectPath);
        if (link.isWaitedFor && handOver(bus, link.name)) {
            return Start::Forwarded;
        }
    }
    return Start::Unanswered;
}

void ApplicationService::Activate(const QVariantMap &platformData)
{
    const QVariant kubeConfig = platformData.value(kubeConfigKey);
    if (!kubeConfig.isValid()) {
        Q_EMIT activated();
    } else if (kubeConfig.metaType() == QMetaType::fromType<QString>()
        && kubeconfig_list::isComplete(kubeConfig.toString())) {
        Q_EMIT startedAgain(kubeConfig.toString());
    } else {
        sendErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("%1 is not a list of absolute paths, separated by \":\".").arg(kubeConfigKey));
    }
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
