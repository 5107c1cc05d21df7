// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/ApplicationService.h"
#include "app/ReadablePalette.h"
#include "platform/desktop/Bundle.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/process/ProcessSetup.h"
#include "platform/process/TerminationSignals.h"

#include <QApplication>
#include <QIcon>
#include <QMessageBox>

#include <cstdlib>

namespace {

/// Says on standard error, and on the screen when there is one, why the application cannot start.
int refuseToStart(QApplication &application, const QString &reason)
{
    tidewright::writeDiagnostic(reason, tidewright::DiagnosticStream::StandardError);
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("offscreen") || platform == QLatin1String("minimal")) {
        return EXIT_FAILURE;
    }
    QMessageBox box(QMessageBox::Critical, QStringLiteral("Tidewright"), reason, QMessageBox::Close);
    box.open();
    application.exec();
    return EXIT_FAILURE;
}

bool hasDisplay()
{
    const auto isSet = [](const char *name) { return !qEnvironmentVariableIsEmpty(name); };
    return isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY") || isSet("DISPLAY");
}

int refuseWithoutDisplay(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QString obstacle = tidewright::AppDelegate().startUp();
    const QString reason
        = obstacle.isEmpty() ? QStringLiteral("Tidewright cannot start: there is no display.") : obstacle;
    tidewright::writeDiagnostic(reason, tidewright::DiagnosticStream::StandardError);
    return EXIT_FAILURE;
}

int runApplication(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tidewright"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tidewright")); // ends every window's title
    QGuiApplication::setWindowIcon(
        QIcon(tidewright::bundle::resource(QStringLiteral("images/tidewright.svg"))));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.brindle.Tidewright"));
    tidewright::ApplicationService service;
    if (service.start() == tidewright::ApplicationService::Start::Forwarded) {
        return EXIT_SUCCESS;
    }
    const tidewright::ReadablePalette palette;
    tidewright::AppDelegate delegate;
    const QString obstacle = delegate.startUp();
    if (!obstacle.isEmpty()) {
        return refuseToStart(application, obstacle);
    }
    // Queued: a start waits for the answer, and not for the window.
    QObject::connect(&service, &tidewright::ApplicationService::activated, &delegate,
        &tidewright::AppDelegate::comeForward, Qt::QueuedConnection);
    QObject::connect(&service, &tidewright::ApplicationService::startedAgain, &delegate,
        &tidewright::AppDelegate::startedAgain, Qt::QueuedConnection);
    const tidewright::TerminationSignals signals;
    QObject::connect(
        &signals, &tidewright::TerminationSignals::received, &delegate, &tidewright::AppDelegate::quit);
    delegate.applicationDidFinishLaunching();
    const int status = QApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    tidewright::settleSignals();
    tidewright::raiseDescriptorLimit();
    tidewright::sendQtMessagesToDiagnostics();
    const int status = hasDisplay() ? runApplication(argc, argv) : refuseWithoutDisplay(argc, argv);
    // Worker threads may still be blocked, and nobody waits for them: no destructor of the process may run
    // under them. One of a script may even be blocked inside stdio, with its locks.
    std::_Exit(status);
}
