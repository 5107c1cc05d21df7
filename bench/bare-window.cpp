// SPDX-License-Identifier: GPL-3.0-or-later
// A window with one empty table and nothing else: what a cluster window's memory is compared with.
#include <QApplication>
#include <QMainWindow>
#include <QStandardItemModel>
#include <QTableView>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QMainWindow window;
    QStandardItemModel model(0, 6);
    auto *table = new QTableView;
    table->setModel(&model);
    window.setCentralWidget(table);
    window.resize(1200, 800);
    window.show();
    return QApplication::exec();
}
