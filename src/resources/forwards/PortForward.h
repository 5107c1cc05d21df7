// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QUrl>

#include <chrono>

namespace tidewright {

/// What is forwarded, from where, and which window asked for it. A plain value.
struct ForwardRequest
{
    QString target; ///< "service/web", as kubectl takes it
    QString context;
    QString nameSpace;
    QString kubeConfig; ///< path or list of paths, to be shown
    quint16 port = 0; ///< of the target
    quint16 localPort = 0; ///< 0: any that is free
    QString windowTitle;
    QPointer<WindowState> window;
};

/// How long to go on when a forward breaks off.
struct ForwardPatience
{
    std::chrono::milliseconds firstPause{1000}; ///< each one after it is twice as long
    std::chrono::milliseconds longestPause{30'000};
    std::chrono::milliseconds lasting{10'000}; ///< what held so long begins with the first pause again
    int triesInVain = 10; ///< one after the other, before it counts as failed
};

/// The pause before the next try, `tries` being how many there were. Pure.
std::chrono::milliseconds pauseBefore(int tries, const ForwardPatience &patience);

/// The local port in a line of kubectl's, "Forwarding from 127.0.0.1:41234 -> 80"; 0 when it says something
/// else. Pure.
quint16 forwardedFrom(QByteArrayView line);

/// One `kubectl port-forward`, begun again when its pod is replaced or the connection is lost, in the context
/// and namespace where it was asked for, whatever its window turns to. A context that leads elsewhere by then
/// ends it. The child ends with the object. Main thread.
class PortForward : public QObject
{
    Q_OBJECT
public:
    enum class State { Starting, Forwarding, Reconnecting, Failed };

    /// `shell` acts where the request says; it is used by nobody else. `destination` is where the context
    /// leads (KubeConfigContents::destination).
    PortForward(ForwardRequest request, std::shared_ptr<Shell> shell, QString destination,
        const ForwardPatience &patience = {}, QObject *parent = nullptr);
    ~PortForward() override;

    const ForwardRequest &request() const { return m_request; }
    State state() const { return m_state; }
    /// kubectl's last words on standard error, or why it was not begun again; clean, perhaps of many lines.
    QString said() const { return m_said; }
    /// http://localhost:PORT; empty until kubectl has told the port.
    QUrl address() const;
    /// The title of the window that asked for it, and whether that is still there.
    QString belongsTo() const;
    /// What is run, with the program's short name.
    QStringList commandLine() const;

    /// Starts it, or begins again at once one that waits or has failed.
    void start();

Q_SIGNALS:
    void changed();

private:
    void setState(State state);
    void run();
    void hear(const QByteArray &output);
    void hearError(const QByteArray &bytes);
    void ended(const QString &failure);
    void reconnect();

    const ForwardRequest m_request;
    const std::shared_ptr<Shell> m_shell;
    const QString m_destination;
    const ForwardPatience m_patience;
    State m_state = State::Starting;
    QString m_said;
    QByteArray m_line; ///< of standard output, whose end is to come
    quint16 m_localPort = 0; ///< 0 until it is known
    bool m_isRunning = false;
    int m_tries = 0; ///< since it last held for long
    int m_inVain = 0; ///< since it last forwarded
    QElapsedTimer m_forwarding;
    QTimer m_pause;
};

} // namespace tidewright
