// SPDX-License-Identifier: GPL-3.0-or-later
// The program as it starts for the user, ended when its pod table has rows. Prints the milliseconds until
// then since LAUNCHED_AT, nanoseconds of the clock of the day: ending the children takes a while that is
// nobody's waiting. measure-budgets.sh compares them with the bare kubectl runs that it must make.
#include "app/AppDelegate.h"
#include "app/window/MainWindowController.h"
#include "pods/table/PodController.h"

#include <QApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

long long millisecondsSinceLaunch()
{
    const long long launched = qEnvironmentVariable("LAUNCHED_AT").toLongLong();
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return (std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() - launched) / 1'000'000;
}

} // namespace

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
            QObject::connect(table, &tidewright::SharedContentViewController::loadFinished, table, [table] {
                std::printf("first pod rows after %lld ms\n", millisecondsSinceLaunch());
                QApplication::exit(table->tableItems().empty() ? EXIT_FAILURE : EXIT_SUCCESS);
            });
        }
    }
    const int status = QApplication::exec();
    delegate.applicationWillTerminate();
    std::fflush(stdout);
    std::_Exit(status);
}
