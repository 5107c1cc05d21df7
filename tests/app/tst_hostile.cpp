// SPDX-License-Identifier: GPL-3.0-or-later
// A window on a cluster whose every name and text means harm: nothing of it is more than text.
#include "../../bench/StallMeter.h"
#include "Desktop.h"
#include "app/content/KindTabs.h"
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/settings/UserDefaults.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/table/SharedContentViewController.h"
#include "support/TestSupport.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTextBlock>
#include <QTimer>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

void checkText(const QString &text, const QString &where)
{
    for (const QChar character : text) {
        const bool isHarmful = character == u'\u202e' || character == u'\u2066' || character == u'\u001b';
        QVERIFY2(!isHarmful, qPrintable(where + u": "_s + text.left(200)));
    }
}

#ifdef __SANITIZE_ADDRESS__
constexpr double longestPause = 0.5; // seconds
#else
constexpr double longestPause = 0.1;
#endif

/// What is on the screen has neither mark-up nor anything that moves the text around it.
void checkWidgets(const QString &where)
{
    const auto isMarkUp
        = [](const QString &text) { return text.contains(u"<img"_s) || text.contains(u"<a href"_s); };
    for (const QWidget *widget : QApplication::allWidgets()) {
        QVERIFY2(!isMarkUp(widget->toolTip()), qPrintable(where + u": "_s + widget->toolTip().left(200)));
        checkText(widget->toolTip(), where);
        checkText(widget->windowTitle(), where);
        const auto *menu = qobject_cast<const QMenu *>(widget);
        for (const QAction *action : widget->actions()) {
            checkText(action->text(), where);
            QVERIFY2(
                !isMarkUp(action->toolTip()) || (menu && !menu->toolTipsVisible()), // its text by default
                qPrintable(where + u": "_s + action->toolTip().left(200)));
        }
        if (const auto *label = qobject_cast<const QLabel *>(widget)) {
            checkText(label->text(), where);
            QString shown = label->text();
            shown.remove(QRegularExpression(u"<a href=\"\\d+\">"_s)); // the program's own links
            QVERIFY2(label->textFormat() == Qt::PlainText || !isMarkUp(shown), qPrintable(where + shown));
        } else if (const auto *view = qobject_cast<const QPlainTextEdit *>(widget)) {
            checkText(view->document()->firstBlock().text(), where);
        }
    }
}

} // namespace

class TestHostile : public QObject
{
    Q_OBJECT
private:
    QTemporaryDir m_folder;
    QStringList m_stalls;

    /// The words of all command lines that kubectl got.
    QByteArrayList words() const
    {
        QFile file(m_folder.filePath(u"words"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\0') : QByteArrayList();
    }

    template <typename Step> void watch(const QString &what, Step step)
    {
        bench::StallMeter meter;
        meter.start();
        step();
        meter.longest(); // ends the measuring
        if (meter.longestCpu() > longestPause) {
            m_stalls.append(u"%1: %2 s"_s.arg(what, QString::number(meter.longestCpu())));
        }
        checkWidgets(what);
    }

    /// The context menu of the first selected row is opened, looked at and closed.
    void openMenu(ResourceTableView &view, const QString &where) const
    {
        bool opened = false;
        QTimer look;
        look.callOnTimeout([&] {
            if (auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget())) {
                look.stop();
                opened = true;
                checkWidgets(where);
                menu->close();
            }
        });
        look.start(0);
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, view.mapToGlobal(QPoint()));
        QApplication::sendEvent(view.viewport(), &event);
        QVERIFY(opened);
    }

    void useTable(Desktop &desktop, const QString &name)
    {
        SharedContentViewController *table = nullptr;
        watch(name + u" shown"_s, [&] {
            Q_EMIT desktop.content().sidebarItemWanted(name);
            table = &desktop.table();
            QCOMPARE(table->kind().tableName.toLower(), name);
            QTRY_VERIFY(table->rowsAsOf().isValid() && !table->isLoading());
        });
        watch(name + u" listed"_s, [&] { // what came until now is live
            table->reload();
            QTRY_VERIFY(!table->isLoading());
        });
        const int rows = table->arrangedObjects().rowCount();
        QVERIFY2(rows >= 3 || table->problem().contains(u"could not be read"_s),
            qPrintable(name + u": "_s + QString::number(rows) + table->problem().left(200)));
        if (rows == 0) {
            return;
        }
        watch(name + u" filtered"_s, [&] {
            table->setFilter(u"hostile"_s);
            QTRY_VERIFY(table->arrangedObjects().rowCount() < rows);
            table->setFilter({});
            QTRY_COMPARE(table->arrangedObjects().rowCount(), rows);
        });
        watch(name + u" painted"_s, [&] { QVERIFY(!table->tableView().grab().isNull()); });
        for (int row = 0; row < rows; ++row) {
            const QString object = table->objectAt(row).name;
            const QString where = u"%1 row %2: "_s.arg(name).arg(row) + object.left(40);
            watch(where, [&] {
                table->tableView().selectRow(row);
                table->copyName();
                openMenu(table->tableView(), where);
                table->deleteRows();
            });
            if (const OpenQuestion question = desktop.question()) {
                watch(where, [&] { question.press(u"Cancel"_s); });
            }
            if (row == 0 || object == u"crowd"_s || object == u"huge"_s) {
                watch(where + u" previewed"_s, [&] { preview(*table, object == u"huge"_s); });
            }
        }
    }

    /// Until all of it is shown that is ever shown.
    static void preview(SharedContentViewController &table, bool isHuge)
    {
        table.showQuickLookPanel();
        const QTextDocument *text = PreviewPanel::shared().findChild<QPlainTextEdit *>()->document();
        QTRY_VERIFY2(
            isHuge ? text->lastBlock().text().startsWith(u"# This is the beginning of "_s) : !text->isEmpty(),
            qPrintable(PreviewPanel::shared().windowTitle().left(80) + text->lastBlock().text().left(200)));
        PreviewPanel::shared().close();
    }

private Q_SLOTS:
    void init() { setUserDefaultsForTesting(nullptr); }

    void everyKind()
    {
        const DemoProcess demo(QStringList{u"--hostile"_s});
        QVERIFY(demo.isReady());
        const QString kubectl = m_folder.filePath(u"kubectl"_s);
        QFile script(kubectl);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nprintf '%s\\0' \"$@\" >> " + m_folder.filePath(u"words"_s).toUtf8()
            + "\nexec " + qgetenv("TIDEWRIGHT_TEST_KUBECTL") + " \"$@\"\n");
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        script.close();
        setKubectlPath(kubectl);
        QVERIFY(QDir::setCurrent(m_folder.path()));
        UserDefaults settings(m_folder.filePath(u"settings.json"_s));
        settings.set(u"defaultKubeConfigPath"_s, demo.kubeconfig());
        setUserDefaultsForTesting(&settings);
        m_stalls.clear();
        {
            Desktop desktop;
            desktop.openWindow();
            QTRY_VERIFY(desktop.state().namespaceList().enabled);
            for (const KindTab &tab : kindTabs()) {
                if (tab.key() != u"custom resource definitions") {
                    useTable(desktop, tab.key());
                }
                if (QTest::currentTestFailed()) {
                    return;
                }
            }
        }
        const QByteArrayList words = this->words();
        QVERIFY(words.contains("get") && !words.contains("--all") && !words.contains("-oyaml"));
        QVERIFY(QDir(m_folder.path()).entryList({u"hostile*"_s}).isEmpty());
        QVERIFY(!QFile::exists(u"/tmp/hostile-was-written"_s));
        QVERIFY2(m_stalls.isEmpty(), qPrintable(m_stalls.join(u'\n')));
        setUserDefaultsForTesting(nullptr);
    }
};

QTEST_MAIN(TestHostile)
#include "tst_hostile.moc"
