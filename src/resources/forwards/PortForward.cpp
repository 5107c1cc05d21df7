// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/forwards/PortForward.h"

#include "core/running/ApplicationRecord.h"
#include "platform/text/DisplayText.h"
#include "platform/text/TerminalText.h"
#include "platform/text/Utf8.h"
#include "platform/threads/MainQueue.h"

#include <QRegularExpression>

#include <algorithm>

namespace tidewright {

namespace {

constexpr qsizetype charactersKept = 4000;
constexpr qsizetype longestLine = 4096;

} // namespace

std::chrono::milliseconds pauseBefore(int tries, const ForwardPatience &patience)
{
    auto pause = patience.firstPause;
    for (int i = 0; i < tries && pause < patience.longestPause; ++i) {
        pause *= 2;
    }
    return std::min(pause, patience.longestPause);
}

quint16 forwardedFrom(QByteArrayView line)
{
    static const QRegularExpression known(
        QStringLiteral("^Forwarding from (?:127\\.0\\.0\\.1|\\[::1\\]):(\\d+) -> \\d+\\s*$"));
    return known.match(QString::fromLatin1(line)).captured(1).toUShort();
}

PortForward::PortForward(ForwardRequest request, std::shared_ptr<Shell> shell, QString destination,
    const ForwardPatience &patience, QObject *parent)
    : QObject(parent)
    , m_request(std::move(request))
    , m_shell(std::move(shell))
    , m_destination(std::move(destination))
    , m_patience(patience)
    , m_localPort(m_request.localPort)
{
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &PortForward::reconnect);
    if (m_request.window) {
        connect(m_request.window, &QObject::destroyed, this, &PortForward::changed);
    }
}

PortForward::~PortForward()
{
    m_shell->cancel();
}

QUrl PortForward::address() const
{
    return m_localPort == 0 ? QUrl() : QUrl(QStringLiteral("http://localhost:%1").arg(m_localPort));
}

QString PortForward::belongsTo() const
{
    return m_request.window ? m_request.windowTitle : tr("%1 (closed)").arg(m_request.windowTitle);
}

QStringList PortForward::commandLine() const
{
    const QString local = m_localPort == 0 ? QString() : QString::number(m_localPort);
    return QStringList{QStringLiteral("kubectl"), QStringLiteral("port-forward")}
    + placeArguments(m_request.context, m_request.nameSpace)
        + QStringList{m_request.target, local + QLatin1Char(':') + QString::number(m_request.port)};
}

void PortForward::setState(State state)
{
    m_state = state;
    Q_EMIT changed();
}

void PortForward::start()
{
    if (m_isRunning) {
        return;
    }
    m_tries = 0;
    m_inVain = 0;
    if (m_forwarding.isValid()) { // time has passed since the context was known to lead to the right place
        setState(State::Reconnecting);
        reconnect();
    } else {
        setState(State::Starting);
        run();
    }
}

void PortForward::run()
{
    m_isRunning = true;
    m_line.clear();
    m_said.clear();
    QStringList arguments = commandLine();
    arguments.first() = kubectlPath();
    const QPointer self(this);
    m_shell->runStreaming(
        arguments,
        [self](const QByteArray &output, const std::optional<QByteArray> &error) {
            postToMain(self, [output, error](PortForward &forward) {
                error ? forward.hearError(*error) : forward.hear(output);
            });
        },
        [self](const std::optional<QString> &failure) {
            postToMain(self, [failure](PortForward &forward) { forward.ended(failure.value_or(QString())); });
        });
}

void PortForward::hear(const QByteArray &output)
{
    m_line += output;
    for (qsizetype end = m_line.indexOf('\n'); end >= 0; end = m_line.indexOf('\n')) {
        const quint16 port = forwardedFrom(QByteArrayView(m_line).first(end));
        m_line.remove(0, end + 1);
        if (port != 0 && m_state != State::Forwarding) {
            m_localPort = port;
            m_forwarding.start();
            setState(State::Forwarding);
        }
    }
    m_line = m_line.right(longestLine);
}

void PortForward::hearError(const QByteArray &bytes)
{
    m_said += display_text::clean(terminal_text::withoutControls(shownUtf8(bytes)));
    m_said = m_said.right(charactersKept);
    Q_EMIT changed();
}

void PortForward::ended(const QString &failure)
{
    m_isRunning = false;
    if (m_said.trimmed().isEmpty()) {
        m_said = failure;
    }
    const bool hasForwarded = m_state == State::Forwarding;
    m_inVain = hasForwarded ? 0 : m_inVain + 1;
    if (!m_forwarding.isValid() || m_inVain >= m_patience.triesInVain) {
        setState(State::Failed);
        return;
    }
    if (hasForwarded && m_forwarding.hasExpired(m_patience.lasting.count())) {
        m_tries = 0;
    }
    setState(State::Reconnecting);
    m_pause.start(pauseBefore(m_tries++, m_patience));
}

/// The next kubectl reads the user's files again, which may lead elsewhere by now.
void PortForward::reconnect()
{
    m_pause.stop();
    m_isRunning = true;
    shellQueue().post([shell = m_shell, self = QPointer(this), context = m_request.context,
                          destination = m_destination] {
        QString unread;
        const auto now = readKubeConfig(*shell, unread);
        const bool isSame = now && now->destination(context) == destination;
        postToMain(self, [isRead = now.has_value(), isSame, unread](PortForward &forward) {
            if (isSame) {
                forward.run();
            } else if (!isRead) {
                forward.m_said = unread;
                forward.ended(unread);
            } else {
                forward.m_isRunning = false;
                forward.m_said = tr("The context %1 leads elsewhere by now.").arg(forward.m_request.context);
                forward.setState(State::Failed);
            }
        });
    });
}

} // namespace tidewright
