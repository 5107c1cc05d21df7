// SPDX-License-Identifier: GPL-3.0-or-later
// shell-holder TOOL FOLDER KINDS [SURVIVORS]
//
// An application with children, to be ended by a test: per letter of KINDS it starts, through Shell, a run
// (r), a stream (s), one that is deaf to SIGTERM (d), one that ends and leaves a child of its own to write
// to its pipe (b), or one that is to outlive it (k). Each child leaves a file with its number in FOLDER, the
// last kind in SURVIVORS.
// A line on standard input, or its end, makes the application quit in order.
#include "core/running/Shell.h"
#include "platform/process/ProcessKeeper.h"
#include "platform/threads/MainQueue.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cstdlib>
#include <vector>

using namespace tidewright;

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    mainQueue();
    const QStringList arguments = QCoreApplication::arguments();
    const QString folder = arguments.at(2);
    std::vector<std::shared_ptr<Shell>> shells;
    for (const QChar kind : arguments.at(3)) {
        auto shell = Shell::create();
        QStringList command{arguments.at(1), QStringLiteral("pidfile"), folder, QStringLiteral("hang")};
        if (kind == u's') {
            shell->runStreaming(command, [](auto &&...) {});
        } else {
            if (kind == u'k') {
                shell->outlivesApplication = true;
                command[2] = arguments.at(4);
            } else if (kind == u'd') {
                command.insert(1, QStringLiteral("ignore-term"));
            } else if (kind == u'b') {
                command.insert(1, QStringLiteral("grandchild"));
                command.insert(2, QStringLiteral("3"));
            }
            shell->runAsync(command, false, nullptr, [](const ShellResult &) {});
        }
        shells.push_back(std::move(shell));
    }
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    QCoreApplication::exec();
    ProcessKeeper::instance().endAll(std::chrono::milliseconds(300));
    std::_Exit(0); // as the application ends: its background threads may still be blocked
}
