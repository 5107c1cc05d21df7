// SPDX-License-Identifier: GPL-3.0-or-later
// action-host FOLDER
//
// An application that runs the action in FOLDER. A line on standard input, or its end, makes it quit in
// order.
#include "actions/ActionFolders.h"
#include "platform/process/ProcessKeeper.h"
#include "platform/threads/MainQueue.h"

#include <QApplication>
#include <QSocketNotifier>

#include <cstdlib>

using namespace tidewright;

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    mainQueue();
    const ActionTree tree = loadActionFolders({QCoreApplication::arguments().at(1)});
    tree.nodes.at(0).item->performAction({});
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    QCoreApplication::exec();
    ProcessKeeper::instance().endAll(std::chrono::milliseconds(200));
    std::_Exit(EXIT_SUCCESS); // as the application ends: its background threads may still be busy
}
