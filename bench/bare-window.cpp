// SPDX-License-Identifier: GPL-3.0-or-later
// bare-window [COUNT]
//
// Windows with one empty table each and nothing else: what the memory of cluster windows is compared with.
#include <QApplication>
#include <QMainWindow>
#include <QStandardItemModel>
#include <QTableView>

#include <deque>

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QStandardItemModel model(0, 6);
    std::deque<QMainWindow> windows(QCoreApplication::arguments().value(1, QStringLiteral("1")).toUInt());
    for (QMainWindow &window : windows) {
        auto *table = new QTableView;
        table->setModel(&model);
        window.setCentralWidget(table);
        window.resize(1200, 800);
        window.show();
    }
    return QApplication::exec();
}
