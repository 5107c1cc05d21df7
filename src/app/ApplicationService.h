// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusContext>
#include <QObject>
#include <QVariantMap>

#include <memory>

namespace tidewright {

/// The application's place on the session bus, so that starting the program a second time goes to the running
/// one instead: its windows, its console and its idea of the kubeconfig are one. Without a session bus every
/// start is a program of its own.
///
/// Two names are taken, both with the object /com/brindle/Tidewright, which speaks
/// org.freedesktop.Application:
/// - "com.brindle.Tidewright.At" followed by 32 hexadecimal digits, made from the settings file, the display
///   and the file of the program. Starts look for this one, so a start with other settings, on another
///   display or of another build is never swallowed, by no program old or new: it is a program of its own.
/// - "com.brindle.Tidewright", which launchers know. It belongs to the program that runs longest.
///
/// A start calls Activate with an entry in its platform data that launchers do not know and leave out:
/// - "tidewright-kubeconfig", a text: the paths of KUBECONFIG, absolute, separated by ":"; empty when the
///   variable names none.
/// Anything else there is answered with org.freedesktop.DBus.Error.InvalidArgs, and nothing happens.
class ApplicationService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    enum class Start {
        First, ///< this process has the name, or there is no bus
        Forwarded, ///< another process has it and took over what was asked
        Unanswered, ///< another process has it, and does not answer or could not be told
    };

    /// The application object must be there: its platform counts among displays.
    explicit ApplicationService(QObject *parent = nullptr);
    ~ApplicationService() override;

    /// Takes the names or tells the owner. Waits for the bus and for the answer for at most three seconds in
    /// all; on a bus that hangs the program is one of its own.
    Start start();

public Q_SLOTS:
    // What the bus calls.
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    void ActivateAction(
        const QString &action, const QVariantList &parameter, const QVariantMap &platformData);

Q_SIGNALS:
    /// A launcher asks the program to come forward.
    void activated();
    /// The program was started once more, with that list of absolute paths in KUBECONFIG; empty: with none.
    void startedAgain(const QString &kubeConfig);

private:
    struct Link;
    static Start takeName(Link &link);

    const std::shared_ptr<Link> m_link;
};

} // namespace tidewright
