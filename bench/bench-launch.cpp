// SPDX-License-Identifier: GPL-3.0-or-later
// The program as it starts for the user, ended as soon as its pod table has rows. measure-budgets.sh compares
// its running time with that of the bare kubectl runs that it must make.
#include "app/AppDelegate.h"
#include "app/MainWindowController.h"
#include "pods/PodController.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    tidewright::AppDelegate delegate;
    if (const QString obstacle = delegate.startUp(); !obstacle.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(obstacle));
        return EXIT_FAILURE;
    }
    delegate.applicationDidFinishLaunching();
    const auto tables = application.allWidgets();
    for (QWidget *widget : tables) {
        if (auto *table = qobject_cast<tidewright::PodController *>(widget)) {
            QObject::connect(table, &tidewright::SharedContentViewController::loadFinished, table,
                [table] { QApplication::exit(table->tableItems().empty() ? EXIT_FAILURE : EXIT_SUCCESS); });
        }
    }
    const int status = QApplication::exec();
    delegate.applicationWillTerminate();
    std::_Exit(status);
}
