// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QVariantMap>

namespace tidewright {

/// The application's name on the session bus, so that starting the program a second time brings the running
/// one forward instead: its windows, its console and its idea of the kubeconfig are one. Speaks
/// org.freedesktop.Application, which launchers use too. Without a session bus every start is a program of
/// its own.
class ApplicationService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    enum class Start {
        First, ///< this process has the name, or there is no bus
        Forwarded, ///< another process has it and was asked to come forward
        Unanswered, ///< another process has it and does not answer
    };

    using QObject::QObject;

    /// Takes the name or tells its owner. Waits for the bus and for the answer for at most three seconds in
    /// all; on a bus that hangs the program is one of its own. The service must live as long as the process.
    Start start();

public Q_SLOTS:
    // What the bus calls.
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    void ActivateAction(
        const QString &action, const QVariantList &parameter, const QVariantMap &platformData);

Q_SIGNALS:
    /// The program was started once more.
    void activated();

private:
    Start takeName();
};

} // namespace tidewright
