// SPDX-License-Identifier: GPL-3.0-or-later
#include "App.h"
#include "app/content/SidebarController.h"
#include "app/toolbar/ClusterToolBar.h"
#include "app/toolbar/FilterField.h"
#include "app/toolbar/SearchableComboBox.h"
#include "core/running/ApplicationRecord.h"
#include "pods/logs/view/CombinedLogsViewController.h"
#include "pods/logs/view/CombinedLogsWindowController.h"
#include "pods/table/ContainerButton.h"
#include "pods/table/ContainerCopy.h"
#include "resources/changes/RowDeletion.h"
#include "support/Table.h"

#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QListView>
#include <QRegularExpression>
#include <QTabBar>
#include <QTimer>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

QList<CombinedLogsWindowController *> logWindows()
{
    QList<CombinedLogsWindowController *> windows;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *found = qobject_cast<CombinedLogsWindowController *>(window)) {
            windows.append(found);
        }
    }
    return windows;
}

/// Searches a list for a text and chooses what is found, if anything is. How many rows were offered.
int typeInto(SearchableComboBox *list, const QString &text)
{
    const QString before = list->currentText();
    QTest::keyClicks(list, text.left(1));
    auto *search = list->findChild<QLineEdit *>();
    QTest::keyClicks(search, text.mid(1));
    const int rows = search->parentWidget()->findChild<QListView *>()->model()->rowCount();
    const bool isUnchanged = list->currentText() == before; // looking changes nothing
    QTest::keyClick(search, rows > 0 ? Qt::Key_Return : Qt::Key_Escape);
    return isUnchanged ? rows : -1;
}

QString state(const QAction &action)
{
    return (action.isEnabled() ? u"on: "_s : u"off: "_s) + action.toolTip();
}

} // namespace

class TestClusterWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:

    void namespaceChangeEmptiesTables()
    {
        App app;
        app.open();
        app.cluster.forgetCalls();
        app.page().sidebarController().select(u"Events"_s);
        app.cluster.hold(u"get po"_s);
        app.state().chooseNamespace(u"shop"_s);
        const auto *pods = app.content().tableControllerForScope(u"pod"_s);
        QCOMPARE(pods->tableItems().size(), 0U); // also while it is hidden
        QTRY_COMPARE(app.cluster.tableReads().filter(u" --context=b -nshop "_s).size(), 14);
        QVERIFY(app.cluster.tableReads().first().startsWith(u"get events "_s)); // the one that is seen
        app.cluster.release(u"get po"_s);
        QTRY_COMPARE(pods->tableItems().size(), 3U);
        const int visible = app.cluster.niceness(u"get events"_s);
        QCOMPARE(
            app.cluster.niceness(u"get po"_s), qMin(19, visible + 10)); // it yields to the table that is seen
    }

    void filterFollowsTheTable()
    {
        App app;
        app.open();
        QLineEdit *filter = app.page().toolBar().filterField();
        QTest::keyClick(app.frame, Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(filter->hasFocus());
        QTest::keyClicks(filter, u"WEB-2"_s);
        QCOMPARE(app.table().arrangedObjects().rowCount(), 1);
        QTest::keyClick(filter, Qt::Key_Down); // on to the row that was found
        QCOMPARE(app.table().chosenObjects().first().name, u"web-2"_s);
        QVERIFY(!filter->hasFocus());
        app.page().sidebarController().select(u"Jobs"_s);
        QCOMPARE(filter->text(), QString());
        app.page().sidebarController().select(u"Pods"_s);
        QCOMPARE(filter->text(), u"WEB-2"_s);
        QTest::keyClick(filter, Qt::Key_Escape);
        QCOMPARE(app.table().arrangedObjects().rowCount(), 3);
    }

    void titles()
    {
        App app;
        app.open();
        const QString other = app.cluster.path(u"other"_s);
        QVERIFY(QFile::copy(app.cluster.kubeConfig(), other));
        MainWindowController *opener = app.frame->currentPage();
        for (const auto &[chosen, title, windowTitle, tabTitle] :
            {std::tuple(QString(), QString(), app.cluster.kubeConfig(), u"default"_s),
                {other, QString(), other, u"default"_s},
                {other + u":/a/config:/b/config:/c"_s, QString(), u"other, a/config, b/config, …"_s,
                    u"default"_s},
                {other, u"a&b"_s, u"a&b"_s, u"a&&b : default"_s}}) {
            MainWindowController *opened = app.frame->addTab(chosen, title);
            QCOMPARE(app.frame->currentPage(), opened);
            QTRY_COMPARE(app.frame->windowTitle(), windowTitle + u" : default"_s);
            const int tab = app.frame->tabBar()->currentIndex();
            QCOMPARE(app.frame->tabBar()->tabText(tab), tabTitle);
            const QString path = chosen.isEmpty() ? app.cluster.kubeConfig() : chosen;
            QVERIFY(app.frame->tabBar()->tabToolTip(tab).contains(u"Kubeconfig: "_s + path));
            QCOMPARE(opened->state().kubeConfigPath(), path);
        }
        QCOMPARE(opener->subwindowControllers.size(), 1);
    }

    void commandsFollowTheSelection()
    {
        App app;
        app.cluster.answer(u"get cj"_s, "c\t@daily\tfalse\t\t\tT\nd\t@daily\tfalse\t\t\tT\n");
        app.open();
        const auto areEnabled = [&app](const QStringList &titles, bool expected) {
            return std::all_of(titles.begin(), titles.end(),
                [&](const QString &title) { return app.command(title).isEnabled() == expected; });
        };
        const QStringList forRows{u"Copy Name"_s, u"Delete…"_s, u"Quick Look"_s};
        const QAction &viewLogs = app.command(u"View Logs"_s);
        const QAction &runNow = app.command(u"Run Cron Job Now"_s);
        QVERIFY(areEnabled(forRows + QStringList{u"Stop Loading"_s, u"Next Tab"_s}, false));
        QVERIFY(app.page().toolBar().commands().contains(&viewLogs));
        QCOMPARE(state(viewLogs), u"off: Select a pod or choose a container first."_s);
        QTRY_COMPARE(app.pods().containerButtons().size(), 4U);
        QTest::mouseClick(app.pods().containerButtons().front(), Qt::LeftButton);
        QCOMPARE(state(viewLogs), u"on: Show the logs of what is selected (Ctrl+Shift+L)"_s);
        QTest::mouseClick(app.pods().containerButtons().front(), Qt::LeftButton);
        QVERIFY(!viewLogs.isEnabled());
        app.table().tableView().selectRow(1);
        QVERIFY(viewLogs.isEnabled() && areEnabled(forRows + QStringList{u"Reload"_s, u"Filter"_s}, true));
        app.cluster.hold(u"get po"_s);
        app.command(u"Reload"_s).trigger();
        QTRY_VERIFY(app.command(u"Stop Loading"_s).isEnabled());
        QTest::keyClick(app.frame, Qt::Key_Escape);
        QTRY_VERIFY(!app.command(u"Stop Loading"_s).isEnabled());
        QCOMPARE(app.table().tableItems().size(), 3U);

        QCOMPARE(state(runNow), u"off: Choose Cron Jobs in the sidebar first."_s);
        app.page().sidebarController().select(u"Cron Jobs"_s);
        QVERIFY(areEnabled(forRows, false) && areEnabled({u"Reload"_s, u"Filter"_s}, true));
        QVERIFY(state(viewLogs).startsWith(u"off: Cron Jobs have no logs."_s));
        QCOMPARE(state(runNow), u"off: Select a cron job first."_s);
        app.table().tableView().selectRow(0);
        QVERIFY(runNow.isEnabled());
        app.table().tableView().selectAll();
        QCOMPARE(state(runNow), u"off: Select a single cron job."_s);
    }

    void longListsAreSearchedByTyping()
    {
        App app;
        QByteArray contexts = "context-7\n";
        QByteArray names;
        for (int number = 0; number < 2000; ++number) {
            contexts += "context-" + QByteArray::number(number) + '\t';
            names += "team-" + QByteArray::number(number) + ' ';
        }
        app.cluster.answer(u"contexts"_s, contexts);
        app.cluster.answer(u"namespaces"_s, names);
        app.open();
        SearchableComboBox *contextList = app.page().toolBar().contextPopupButton();
        SearchableComboBox *namespaceList = app.page().toolBar().namespacesPopupButton();
        QCOMPARE(namespaceList->accessibleName(), u"Namespaces"_s);
        QCOMPARE(namespaceList->count(), 2002); // all namespaces, a separator, and the names
        QCOMPARE(namespaceList->itemText(0), allNamespaces);
        for (auto *list : {contextList, namespaceList}) {
            QTRY_VERIFY(list->isEnabled());
            QCOMPARE(typeInto(list, u"1998"_s), 1);
            QTRY_VERIFY(list->currentText().endsWith(u"-1998"));
        }
        QTRY_VERIFY(app.cluster.ended().contains(u"set team-1998"_s));
        QCOMPARE(app.state().currentContext() + app.state().currentNamespace(), u"context-1998team-1998"_s);

        app.cluster.hold(u"namespaces"_s);
        namespaceList->setFocus(); // disabled while it loads: what is typed next must not go to the filter
        QCOMPARE(typeInto(contextList, u"1997"_s), 1);
        QTRY_VERIFY(!namespaceList->isEnabled());
        QVERIFY(app.frame->focusWidget() == &app.table().tableView());
        app.cluster.release(u"namespaces"_s);
    }

    void logsOpenInWindowsOfTheirOwn()
    {
        App app;
        app.open();
        const std::vector<ContainerPair> pairs{{u"web-1"_s, u"app"_s}, {u"deploy/web"_s, allContainers}};
        app.state().openLogs(pairs, LogScope::Following);
        app.state().openLogs(pairs, LogScope::Following);
        QCOMPARE(logWindows().size(), 2);
        const CombinedLogsViewController &content = logWindows().first()->contentController();
        QVERIFY(content.isVisible());
        QCOMPARE(content.containers, pairs);
        QVERIFY(content.kubeConfigPath.endsWith(u':' + app.cluster.kubeConfig()));
        QCOMPARE(content.context + content.nameSpace, u"bdefault"_s);
        // They stay when the cluster's window goes, and the program ends with the last of them.
        const QPointer first = logWindows().first();
        const QPointer last = logWindows().last();
        connect(app.frame, &QObject::destroyed, first, &QWidget::close);
        connect(first, &QObject::destroyed, last, &QWidget::close);
        QTimer::singleShot(0, app.frame, &QWidget::close);
        QCOMPARE(QApplication::exec(), 0);
        QVERIFY(!first && (!last || !last->isVisible()));

        app.open();
        app.state().openLogs(pairs, LogScope::Following);
        app.cluster.hold(u"get po"_s);
        app.command(u"Reload"_s).trigger();
        QTRY_VERIFY(app.table().isLoading());
        app.delegate.applicationWillTerminate(); // which waits for nobody
        QCOMPARE(logWindows().size(), 0);
        QCOMPARE(app.cluster.ended().count(u"get po"_s), 2);
        app.cluster.release(u"get po"_s);
    }

    void tabsAreWindowsOfTheirOwn()
    {
        App app;
        app.cluster.settings.set(u"kubeconfigFollows"_s, u"window"_s);
        app.open();
        QVERIFY(app.frame->tabBar()->isHidden());
        QPointer<MainWindowController> first = app.frame->currentPage();
        QTest::keyClick(app.frame, Qt::Key_T, Qt::ControlModifier);
        QPointer<MainWindowController> second = app.frame->currentPage();
        QVERIFY(first != second && app.frame->tabBar()->isVisible());
        QTRY_COMPARE(second->state().currentNamespace(), u"default"_s);
        second->state().chooseContext(u"a"_s);
        QTRY_COMPARE(applicationRecord().appContext, u"a"_s);
        QTRY_VERIFY(second->state().namespaceList().enabled);
        app.cluster.forgetCalls();

        // Its neighbour is the main window again, and the user's kubeconfig follows.
        QTest::keyClick(app.frame, Qt::Key_PageUp, Qt::ControlModifier);
        QCOMPARE(app.frame->currentPage(), first.data());
        QCOMPARE(first->state().currentContext(), u"b"_s);
        QTRY_VERIFY(app.cluster.ended().contains(u"file use b"_s));
        QVERIFY(!app.cluster.calls().contains(u"contexts"_s));
        QTest::keyClick(app.frame, Qt::Key_PageUp, Qt::ControlModifier); // around the end
        QCOMPARE(app.frame->currentPage(), second.data());
        QTRY_COMPARE(app.cluster.ended().count(u"file use a"_s), 2);

        QTest::keyClick(app.frame, Qt::Key_PageUp, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(app.frame->pages(), QList<MainWindowController *>({second, first}));
        QCOMPARE(app.frame->currentPage(), second.data());
        QVERIFY(second->toolBar().isVisible() && !first->toolBar().isVisible());

        // A tab that is closed from behind takes its own toolbar along, and no other.
        QPointer<MainWindowController> third = app.frame->addTab();
        QCOMPARE(app.frame->pages(), QList<MainWindowController *>({second, third, first}));
        app.frame->selectTab(2);
        app.frame->closeTab(0);
        QVERIFY(!second && first->toolBar().isVisible() && !third->toolBar().isVisible());
        QTest::keyClick(app.frame, Qt::Key_PageUp, Qt::ControlModifier);
        QVERIFY(third->toolBar().isVisible());
        QLineEdit *field = third->windowConsoleController().commandEntryTextField();
        field->setFocus();
        field->setText(u"kubectl get  po "_s);
        app.frame->showMinimized();
        app.frame->showNormal();
        QTRY_VERIFY(field->hasFocus());
        QVERIFY(third->primaryContentController()
                    .shownTable()
                    ->findChild<QTimer *>(u"refreshTimer"_s)
                    ->isActive());
        QTest::keyClick(field, Qt::Key_W, Qt::ControlModifier); // deletes a word there
        QVERIFY(third);
        QCOMPARE(field->text(), u"kubectl get  "_s);
        third->primaryContentController().shownTable()->tableView().setFocus();
        QTest::keyClick(app.frame, Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!third);
        QCOMPARE(app.frame->currentPage(), first.data());
        QCOMPARE(app.frame->tabBar()->count(), 1);
        QPointer<ClusterWindowFrame> frame = app.frame;
        QTest::keyClick(app.frame, Qt::Key_W, Qt::ControlModifier);
        QTRY_VERIFY(!frame);
        QCOMPARE(app.delegate.mainWindow(), nullptr);
        QCOMPARE(mainConsole(), nullptr);
    }

    void entriesReachTheMainConsole()
    {
        App app;
        app.open();
        ClusterWindowFrame *first = app.frame;
        QCOMPARE(mainConsole(), &first->currentPage()->windowConsoleController());
        QTest::keyClick(app.frame, Qt::Key_N, Qt::ControlModifier);
        ClusterWindowFrame *second = app.delegate.mainWindow();
        QVERIFY(second != first);
        QVERIFY(QTest::qWaitForWindowActive(second));
        QCOMPARE(mainConsole(), &second->currentPage()->windowConsoleController());
        QCOMPARE(app.delegate.windowControllers().size(), 2);
        second->addTab();
        QCOMPARE(mainConsole(), &second->currentPage()->windowConsoleController());

        // A dialog is no cluster window; and with the second window gone the first is the main one.
        app.delegate.showAbout();
        postConsoleEntry(nullptr, u"kubectl x"_s, QString(3200, u'y'), makeConsoleError(u"broken"_s));
        const ConsoleTextView *text = second->currentPage()->windowConsoleController().consoleTextView();
        QTRY_VERIFY(text->toPlainText().contains(u"y…\nbroken\n"_s));
        const QString shown = text->toPlainText();
        QVERIFY(shown.contains(u"kubectl x"_s));
        QCOMPARE(shown.count(u'y'), 3000);
        second->close();
        QTRY_COMPARE(app.delegate.mainWindow(), first);
    }

    void windowsComeBack()
    {
        App app;
        app.open();
        app.delegate.showAbout();
        const auto windows = QApplication::topLevelWidgets();
        QWidget *about = *std::find_if(windows.begin(), windows.end(), [](const QWidget *window) {
            return qobject_cast<const QDialog *>(window) && window->isVisible();
        });
        about->close();
        app.frame->hide();
        app.delegate.applicationShouldHandleReopen(true); // something can be seen: nothing to do
        QVERIFY(!app.frame->isVisible());
        app.delegate.applicationShouldHandleReopen(false);
        QVERIFY(app.frame->isVisible() && about->isVisible());

        // Started once more, the program brings forward what can be seen; and everything when nothing can.
        about->close();
        QTest::keyClick(app.frame, Qt::Key_N, Qt::ControlModifier);
        ClusterWindowFrame *second = app.delegate.mainWindow();
        second->showMinimized();
        app.delegate.comeForward();
        QVERIFY(second->isMinimized() && app.frame->isVisible() && !about->isVisible());
        app.frame->showMinimized();
        app.delegate.comeForward();
        QVERIFY(!second->isMinimized() && !app.frame->isMinimized() && about->isVisible());

        // What else is open keeps no application alive that has no cluster window any more.
        app.delegate.showPreferences();
        for (const QWidget *window : QApplication::topLevelWidgets()) {
            const bool isCluster = qobject_cast<const ClusterWindowFrame *>(window);
            QVERIFY(!window->isVisible() || window->testAttribute(Qt::WA_QuitOnClose) == isCluster);
        }

        // With windows of logs alone there is nothing to bring forward, and About is not what was asked for.
        about->close();
        delete second;
        delete app.frame;
        app.delegate.comeForward();
        app.frame = app.delegate.mainWindow();
        QVERIFY(app.frame && app.frame->isVisible() && !about->isVisible());
    }

    void frameIsRemembered()
    {
        App app;
        app.open();
        QCOMPARE(app.frame->minimumSize(), QSize(600, 310));
        const QRect frame(20, 60, 640, 400);
        app.frame->setGeometry(frame);
        app.frame->close();
        QVERIFY(app.cluster.settings.flush(std::chrono::seconds(10)));
        QVERIFY(UserDefaults(app.cluster.settingsFile()).data(u"TidewrightFrame"_s));
        app.delegate.newDocument();
        QCOMPARE(app.delegate.mainWindow()->geometry(), frame);
        const QSize usual = app.delegate.mainWindow()->size();
        for (const QByteArray &broken : {QByteArray("x"), QByteArray(16, '\xff'), QByteArray(16, '\x7f')}) {
            app.cluster.settings.set(u"TidewrightFrame"_s, broken);
            app.delegate.newDocument();
            const QWidget *window = app.delegate.mainWindow();
            QVERIFY(window->screen()->availableGeometry().intersects(window->geometry()));
            QVERIFY(window->width() >= qMin(600, usual.width()) && window->width() < 10000);
        }
    }

    void namespacesAreTypedWhereTheyAreSecret()
    {
        App app;
        app.cluster.fail(u"namespaces"_s, "Error from server (Forbidden): namespaces is forbidden");
        app.open();
        QPointer<SearchableComboBox> list = app.page().toolBar().namespacesPopupButton();
        const QString before = app.state().currentNamespace();
        for (const QString &nonsense : {u"Night"_s, u"night_"_s, u"-night"_s, QString(64, u'n')}) {
            QCOMPARE(typeInto(list, nonsense), 0);
            QTRY_VERIFY(!list->findChild<QLineEdit *>());
        }
        QCOMPARE(app.state().currentNamespace(), before);
        QCOMPARE(typeInto(list, u"night-shift"_s), 1);
        QCOMPARE(app.state().currentNamespace(), u"night-shift"_s);
        QTRY_VERIFY(app.cluster.ended().contains(u"set night-shift"_s));
        QTRY_VERIFY(!list->findChild<QLineEdit *>());
        QCOMPARE(typeInto(list, before), 1); // leave it, and find it again in another tab
        QTRY_COMPARE(app.state().currentNamespace(), before);
        list = app.frame->addTab()->toolBar().namespacesPopupButton();
        QTRY_VERIFY(list->isEnabled());
        QVERIFY(list->findText(u"night-shift"_s) >= 0);
    }

    /// kubectl would run what a stranger's kubeconfig names.
    void programsToLogInAreAskedAbout()
    {
        App app;
        const QByteArray users
            = R"([{"name": "b", "user": {"exec": {"command": "./run", "args": ["it", "<b>x\ny"]}}},
            {"name": "a", "user": {"auth-provider": {"config": {"cmd-path": "/old", "cmd-args": "a  b"}}}}])";
        app.cluster.edit("\"kind\"", "\"users\": " + users + ", \"kind\"");
        app.openWindow();
        const auto isClosed = [&] { // to the user, and to what is started
            const bool told = app.state().loadingHint().contains(u"which you have not allowed."_s);
            return told && app.state().kubeCtl().makeShell()->gate
                && !app.state().kubeCtl().makeCopy().problem.isEmpty()
                && !app.cluster.calls().contains(u"namespaces"_s) && app.cluster.tableReads().isEmpty();
        };
        QTRY_VERIFY(app.question());
        QCOMPARE(app.question().message().split(u"\n\n"_s).value(1), u"./run it '<b>x\\ny'\n/old a b"_s);
        QVERIFY(app.question().message().contains(app.cluster.kubeConfig()));
        QVERIFY(isClosed());
        app.answer(u"Cancel"_s);
        QVERIFY(isClosed());
        app.type(u"kubectl --context=a get po"_s); // goes where it says, at any other time
        QTRY_VERIFY(app.console().contains(u"you have not allowed"_s));
        app.command(u"Reload"_s).trigger(); // asks again
        QTRY_VERIFY(app.question());
        QVERIFY(isClosed());
        app.answer(u"Allow"_s);
        QTRY_COMPARE(app.table().tableItems().size(), 3U);
        MainWindowController &first = app.page();
        MainWindowController *second = app.frame->addTab();
        QTRY_VERIFY(second->state().namespaceList().enabled);
        app.cluster.forgetCalls();

        app.cluster.edit("\"it\"", "\"it\", \"all\"");
        first.state().reloadContexts();
        QTRY_VERIFY(app.question());
        QVERIFY(first.primaryContentController().shownTable()->tableItems().empty()); // no logs to follow
        app.answer(u"Cancel"_s);
        auto refused = std::make_shared<QString>();
        second->state().whenSettled([refused](const QString &obstacle) { *refused = obstacle; });
        QTRY_VERIFY(refused->contains(u"which you have not allowed"_s));
        app.frame->selectTab(1);
        second->state().retryLoading();
        QTRY_VERIFY(app.question() && app.question().message().contains(u"\n\n./run it all "_s));
        QVERIFY(!app.cluster.calls().contains(u"namespaces"_s));
        app.frame->selectTab(0);

        qputenv("KUBECONFIG", QFile::encodeName(app.cluster.kubeConfig())); // the user's own choice
        app.cluster.edit("./run", "./other");
        MainWindowController *third = app.frame->addTab();
        QTRY_VERIFY(third->state().namespaceList().enabled);
        qunsetenv("KUBECONFIG");
    }

    void hugeDeletions_data()
    {
        // complaint of every kubectl, what happens meanwhile, outcome
        const Table<QByteArray, QString, QString> table;
        const auto outcome = [](const QString &run, const QString &failed, const QString &reason = {}) {
            return QString(u"%1 of 4 command lines were run, %2 failed."_s.arg(run, failed)
                + (reason.isEmpty() ? QString() : u" The others were not run: "_s + reason));
        };
        const auto gone = "Error from server (NotFound): pods \"x\" not found\n"_ba;
        const auto denied = "Error from server (Forbidden): pods \"x\" is forbidden\n"_ba;
        table.row("well", QByteArray(), QString(), outcome(u"4"_s, u"0"_s));
        table.row("gone already", gone + gone, QString(), outcome(u"4"_s, u"4"_s));
        table.row("failed", gone + denied, QString(),
            outcome(u"1"_s, u"1"_s, QString::fromLatin1(gone + denied).trimmed()));
        table.row("window elsewhere", QByteArray(), u"shop"_s, outcome(u"4"_s, u"0"_s));
        table.row("window closed", QByteArray(), u"close"_s, outcome(u"4"_s, u"0"_s));
        table.row("kubeconfig lost", QByteArray(), u"lost"_s, outcome(u"1"_s, u"0"_s, u"no such file"_s));
    }

    /// No command line is longer than a kernel takes, and what is deleted is what was asked about, once.
    void hugeDeletions()
    {
        const auto [complaint, meanwhile, outcome] = Table<QByteArray, QString, QString>::current();
        App app;
        app.open();
        app.delegate.newDocument();
        QTRY_VERIFY(app.delegate.mainWindow()->currentPage()->state().namespaceList().enabled);
        const auto *other
            = app.delegate.mainWindow()->currentPage()->windowConsoleController().consoleTextView();
        const QPointer<ClusterWindowFrame> frame = app.frame;
        app.cluster.forgetCalls();
        QStringList names;
        ObjectNames objects;
        for (int number = 0; number < 4000; ++number) {
            names.append(QString::number(number).rightJustified(50, u'x'));
            objects.append({app.page().state().currentNamespace(), names.last()});
        }
        int finished = 0;
        confirmAndDelete(app.table(), app.page().state(), app.table().kind(), objects, [&] { ++finished; });
        app.cluster.hold(u"delete po"_s);
        QTRY_VERIFY(app.question());
        app.answer(u"Delete"_s);
        const auto runs = [&] { return app.cluster.tableReads().filter(u"delete po "_s); };
        QTRY_COMPARE(runs().size(), 1);
        if (!complaint.isEmpty()) {
            app.cluster.fail(u"delete po"_s, complaint);
        }
        if (meanwhile == u"shop"_s) {
            app.page().state().chooseNamespace(meanwhile);
        } else if (meanwhile == u"lost"_s) {
            app.cluster.fail(u"read"_s, "no such file");
        } else if (meanwhile == u"close"_s) {
            frame->close();
            QTRY_VERIFY(!frame);
        }
        app.cluster.release(u"delete po"_s);
        const auto *console = frame ? app.page().windowConsoleController().consoleTextView() : other;
        QTRY_VERIFY2(
            console->toPlainText().contains(outcome), qPrintable(console->toPlainText().right(1000)));
        QCOMPARE(console->toPlainText().count(u"command lines were run"_s), 1);
        QCOMPARE(console->toPlainText().count(u"kubectl delete po "_s), runs().size());
        QCOMPARE(runs().size(), outcome.first(1).toInt());
        QStringList deleted;
        for (const QString &run : runs()) {
            QVERIFY(run.size() < 80'000);
            deleted += run.split(u' ').mid(2);
        }
        QCOMPARE(deleted, names.first(deleted.size()));
        QTRY_COMPARE(finished, frame ? 1 : 0);
    }

    /// The user's kubeconfig is read anew for every one of them.
    void copiesGoToOneCluster()
    {
        App app;
        app.open();
        app.cluster.hold(u"cp --context=b"_s);
        copyIntoContainer(app.table(), {u"web-1"_s, u"app"_s, app.page().state().currentNamespace()},
            {u"/a/one"_s, u"/a/two"_s}, u"/tmp/"_s);
        const auto copies = [&] { return app.cluster.tableReads().filter(u"cp --context=b "_s); };
        QTRY_COMPARE(copies().size(), 1);
        app.cluster.fail(u"read"_s, "no such file");
        app.cluster.release(u"cp --context=b"_s);
        QTRY_VERIFY(app.console().contains(u"were not copied, because no such file: /a/two."_s));
        QCOMPARE(copies().size(), 1);
    }
};

QTEST_MAIN(TestClusterWindow)
#include "tst_cluster_window.moc"
