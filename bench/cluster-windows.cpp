// SPDX-License-Identifier: GPL-3.0-or-later
// cluster-windows COUNT
//
// The program as it starts for the user, with several windows.
#include "app/AppDelegate.h"
#include "platform/process/TerminationSignals.h"

#include <QApplication>

#include <cstdlib>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    tidewright::AppDelegate delegate;
    if (!delegate.startUp().isEmpty()) {
        return EXIT_FAILURE;
    }
    const tidewright::TerminationSignals signals;
    QObject::connect(
        &signals, &tidewright::TerminationSignals::received, &application, &QCoreApplication::quit);
    for (int count = QCoreApplication::arguments().value(1).toInt(); count > 0; --count) {
        delegate.newDocument();
    }
    const int status = QApplication::exec();
    delegate.applicationWillTerminate();
    std::_Exit(status);
}
