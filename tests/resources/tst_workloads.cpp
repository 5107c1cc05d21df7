// SPDX-License-Identifier: GPL-3.0-or-later
// Scaling deployments, running cron jobs and asking for logs, with windows driven by mouse and keys.
#include "core/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/threads/MainQueue.h"
#include "resources/table/CronJobController.h"
#include "resources/kinds/Deployment.h"
#include "resources/table/DeploymentController.h"
#include "resources/table/JobController.h"
#include "resources/loading/TableLoader.h"
#include "resources/table/ReplicaCell.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/ServiceController.h"
#include "support/Patience.h"
#include "support/StubWindow.h"

#include <QContextMenuEvent>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QStyleOptionSlider>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 30'000; // milliseconds

const Deployment &deployment(const SharedContentViewController &table, int row)
{
    return static_cast<const Deployment &>(*table.arrangedObjects().arrangedRow(row));
}

/// The tool that stands in for kubectl prints these lines, whatever it is asked, and notes what that was.
void pretend(const QByteArray &listing)
{
    setKubectlPath(fakeToolPath());
    qputenv("FAKE_TOOL_SCRIPT", "out\n" + listing);
}

} // namespace

class tst_workloads : public QObject
{
    Q_OBJECT

    std::unique_ptr<StubWindow> m_window;
    std::unique_ptr<SharedContentViewController> m_table;
    QTemporaryDir m_folder;

    template <typename Controller> void open(const QByteArray &listing)
    {
        pretend(listing);
        m_table = std::make_unique<Controller>(*m_window);
        m_table->resize(1100, 400);
        m_table->show();
        QVERIFY(QTest::qWaitForWindowActive(m_table.get()));
        load();
        QFile::remove(record());
    }
    void load()
    {
        QSignalSpy finished(m_table.get(), &SharedContentViewController::loadFinished);
        m_table->reloadLogging(false);
        QVERIFY(finished.wait(patience));
    }
    QString record() const { return m_folder.filePath(u"record"_s); }
    /// The commands that were run, without listings.
    QStringList commands() const
    {
        QFile file(record());
        if (!file.open(QIODevice::ReadOnly)) {
            return {};
        }
        QStringList result;
        QStringList words;
        for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n')) {
            if (line.startsWith(u"KUBECONFIG="_s)) {
                if (words.value(0) != u"get"_s) {
                    result.append(words.join(u' '));
                }
                words.clear();
            } else if (line.size() > 2 && line.startsWith(u'"') && line.endsWith(u'"')) {
                words.append(line.mid(1, line.size() - 2));
            }
        }
        return result;
    }
    ReplicaCell *cell(const QString &name) const
    {
        for (ReplicaCell *candidate : m_table->findChildren<ReplicaCell *>()) {
            if (candidate->deployment() == name) {
                return candidate;
            }
        }
        return nullptr;
    }
    QMessageBox *question() const { return m_table->findChild<QMessageBox *>(); }
    void answer(const QString &title)
    {
        for (QPushButton *button : question()->findChildren<QPushButton *>()) {
            if (button->text() == title) {
                QTest::mouseClick(button, Qt::LeftButton);
                QTRY_VERIFY(!question());
                return;
            }
        }
        QFAIL("no such button");
    }
    static QPoint knob(const QSlider &slider, int value)
    {
        QStyleOptionSlider option;
        option.initFrom(&slider);
        option.minimum = slider.minimum();
        option.maximum = slider.maximum();
        option.sliderPosition = value;
        option.subControls = QStyle::SC_All;
        return slider.style()
            ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, &slider)
            .center();
    }
    void drag(QSlider &slider, int from, int to)
    {
        QTest::mousePress(&slider, Qt::LeftButton, {}, knob(slider, from));
        QTest::mouseMove(&slider, knob(slider, to));
    }
    void act(const QString &how, ReplicaCell &cell);
    /// Lets what was put off until the present work is done happen.
    static void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall); }
    QStringList menuOf(int row, const QString &triggered);

private Q_SLOTS:
    void initTestCase() { mainQueue(); }
    void init();
    void cleanup();
    void oneQuestionForOneChange_data();
    void oneQuestionForOneChange();
    void scaleAndReload();
    void refreshLeavesTheKnobAlone();
    void theRowGoesUnderTheHand_data();
    void theRowGoesUnderTheHand();
    void notInAllNamespacesNorAfterAMove();
    void manySingleRowsSelected();
    void cellsForWhatIsSeen();
    void scalesARealDeployment();
    void listingsAfterTrouble_data();
    void listingsAfterTrouble();
    void runNow_data();
    void runNow();
    void logs_data();
    void logs();
};

void tst_workloads::init()
{
    m_window = std::make_unique<StubWindow>();
    m_window->context = u"ctx"_s;
    m_window->nameSpace = u"team"_s;
    qputenv("FAKE_TOOL_RECORD", record().toUtf8());
}

void tst_workloads::cleanup()
{
    m_table.reset();
    setMainConsoleLookup(nullptr);
    qunsetenv("FAKE_TOOL_SCRIPT");
    qunsetenv("FAKE_TOOL_RECORD");
    QFile::remove(record());
}

/// Words: drag:N, click:N, release, keys (a slider key held down), key:NAME in the slider, type:N, return,
/// escape, leave.
void tst_workloads::act(const QString &how, ReplicaCell &cell)
{
    QSlider &slider = *cell.slider();
    for (const QString &step : how.split(u' ')) {
        const int value = step.section(u':', 1).toInt();
        if (step.startsWith(u"drag"_s)) {
            drag(slider, slider.value(), value);
        } else if (step == u"release"_s) {
            QTest::mouseRelease(&slider, Qt::LeftButton);
        } else if (step.startsWith(u"click"_s)) {
            QTest::mouseClick(&slider, Qt::LeftButton, {}, knob(slider, value));
        } else if (step == u"hold"_s) {
            slider.setFocus();
            for (int press = 0; press < 3; ++press) {
                QKeyEvent down(QEvent::KeyPress, Qt::Key_Right, {}, {}, press > 0);
                QCoreApplication::sendEvent(&slider, &down);
                QKeyEvent repeated(QEvent::KeyRelease, Qt::Key_Right, {}, {}, true);
                QCoreApplication::sendEvent(&slider, &repeated);
                QVERIFY(!question());
            }
        } else if (step == u"up"_s) {
            QTest::keyRelease(&slider, Qt::Key_Right);
        } else if (step.startsWith(u"type"_s)) {
            cell.startTyping();
            QTest::keyClicks(cell.field(), step.section(u':', 1));
            QVERIFY(!question());
        } else if (step == u"escape"_s) {
            QTest::keyClick(
                cell.field()->hasFocus() ? static_cast<QWidget *>(cell.field()) : &slider, Qt::Key_Escape);
        } else if (step == u"return"_s) {
            QTest::keyClick(cell.field(), Qt::Key_Return);
        } else if (step == u"leave"_s) {
            m_table->tableView().setFocus();
        } else {
            QFAIL(qPrintable(step));
        }
        settle();
    }
}

void tst_workloads::oneQuestionForOneChange_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("to"); // -1: nothing is asked
    QTest::newRow("mouse") << u"drag:7 release"_s << 7;
    QTest::newRow("mouse, not let go") << u"drag:7"_s << -1;
    QTest::newRow("mouse, back where it was") << u"drag:7 drag:3 release"_s << -1;
    QTest::newRow("mouse, given up") << u"drag:7 escape release"_s << -1;
    QTest::newRow("groove") << u"click:9"_s << 9;
    QTest::newRow("key held down") << u"hold up"_s << 6;
    QTest::newRow("key, focus leaves first") << u"hold leave"_s << 6;
    QTest::newRow("key, given up") << u"hold escape up leave"_s << -1;
    QTest::newRow("typed beyond the slider") << u"type:4500 return"_s << 4500;
    QTest::newRow("typed, focus leaves") << u"type:12 leave"_s << 12;
    QTest::newRow("typed, given up") << u"type:12 escape leave"_s << -1;
    QTest::newRow("typed the same") << u"type:3 return leave"_s << -1;
    QTest::newRow("typed nonsense") << u"type:x-y return"_s << -1;
    QTest::newRow("beyond any cluster") << u"type:99999999999 escape"_s << -1;
    QTest::newRow("none") << u"type:0 return leave"_s << 0;
}

void tst_workloads::oneQuestionForOneChange()
{
    QFETCH(QString, how);
    QFETCH(int, to);
    open<DeploymentController>("web\\t3\\t3\\t3\\t3\\tT\\n");
    QTRY_VERIFY(cell(u"web"_s));
    ReplicaCell &web = *cell(u"web"_s);
    QCOMPARE(web.slider()->accessibleName(), u"web replicas"_s);
    QCOMPARE(web.field()->accessibleName(), u"web replicas"_s);
    act(how, web);
    QCOMPARE(m_table->findChildren<QMessageBox *>().size(), to < 0 ? 0 : 1);
    if (to >= 0) {
        QCOMPARE(question()->text(), u"Confirm Scale"_s);
        QCOMPARE(question()->informativeText(),
            u"Are you sure you want to scale the deployment \"web\" from 3 to %1?"_s.arg(to));
        QCOMPARE(deployment(*m_table, 0).desired, to);
        QCOMPARE(web.slider()->value(), to);
        answer(u"Cancel"_s);
    } else if (how.contains(u"release"_s) || !how.startsWith(u"drag"_s)) {
        QCOMPARE(web.field()->value(), 3);
    }
    QCOMPARE(deployment(*m_table, 0).desired, 3);
    QCOMPARE(commands(), QStringList());
}

void tst_workloads::scaleAndReload()
{
    open<DeploymentController>("web\\t3\\t3\\t3\\t3\\tT\\ndb\\t2\\t2\\t2\\t2\\tT\\n");
    QTRY_VERIFY(cell(u"db"_s));
    act(u"click:8"_s, *cell(u"db"_s));
    const QList<QLabel *> labels = question()->findChildren<QLabel *>();
    QVERIFY(std::any_of(labels.cbegin(), labels.cend(),
        [](const QLabel *label) { return label->text() == u"Context: ctx\nNamespace: team"_s; }));
    QCOMPARE(deployment(*m_table, 1).previousDesired, 2);
    QSignalSpy reloaded(m_table.get(), &SharedContentViewController::loadFinished);
    QElapsedTimer time;
    time.start();
    answer(u"Scale Deployment"_s);
    QCOMPARE(cell(u"db"_s)->field()->value(), 8);
    QCOMPARE(deployment(*m_table, 1).previousDesired, 8);
    QCOMPARE(deployment(*m_table, 1).desired, 8);
    QTRY_COMPARE(commands(), QStringList{u"scale --context=ctx -nteam --replicas=8 deployment/db"_s});
    QVERIFY(reloaded.wait(patience)); // and then the cluster's own count is back
    QCOMPARE(deployment(*m_table, 1).desired, 2);
    QVERIFY(time.elapsed() >= 1000);
}

void tst_workloads::refreshLeavesTheKnobAlone()
{
    open<DeploymentController>("web\\t3\\t3\\t3\\t3\\tT\\n");
    QTRY_VERIFY(cell(u"web"_s));
    QPointer<ReplicaCell> web = cell(u"web"_s);
    drag(*web->slider(), 3, 7);
    pretend("web\\t5\\t3\\t3\\t3\\tT\\n");
    load();
    QVERIFY(web && web->slider()->isSliderDown());
    QCOMPARE(web->slider()->value(), 7);
    QCOMPARE(web->field()->value(), 7);
    act(u"release"_s, *web);
    QVERIFY(question()->informativeText().endsWith(u"from 5 to 7?"_s));
    load(); // while it is asked
    QCOMPARE(web->field()->value(), 7);
    answer(u"Cancel"_s);
    QCOMPARE(web->slider()->value(), 5);

    // Pressed and let go without a move while the cluster moved on: that was no wish.
    QTest::mousePress(web->slider(), Qt::LeftButton, {}, knob(*web->slider(), 5));
    pretend("web\\t4\\t3\\t3\\t3\\tT\\n");
    load();
    act(u"release"_s, *web);
    QVERIFY(!question());
    QCOMPARE(web->slider()->value(), 4);
}

void tst_workloads::theRowGoesUnderTheHand_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<QString>("event");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("dragged, deleted elsewhere") << u"drag:7"_s << u"delete"_s << QStringList{u"web"_s};
    QTest::newRow("typed, deleted elsewhere") << u"type:5"_s << u"delete"_s << QStringList{u"web"_s};
    QTest::newRow("typed, another namespace") << u"type:5"_s << u"clear"_s << QStringList();
    QTest::newRow("typed, filtered") << u"type:5"_s << u"filter"_s << QStringList{u"web"_s};
    QTest::newRow("typed, another tab") << u"type:5"_s << u"hide"_s << QStringList{u"web"_s, u"db"_s};
    QTest::newRow("let go, another tab") << u"type:5"_s << u"leave, hide"_s << QStringList{u"web"_s, u"db"_s};
}

void tst_workloads::theRowGoesUnderTheHand()
{
    QFETCH(QString, how);
    QFETCH(QString, event);
    QFETCH(QStringList, left);
    open<DeploymentController>("web\\t3\\t3\\t3\\t3\\tT\\ndb\\t2\\t2\\t2\\t2\\tT\\n");
    QTRY_VERIFY(cell(u"db"_s));
    const QPointer<ReplicaCell> db = cell(u"db"_s);
    act(how, *db);
    if (event == u"delete"_s) {
        pretend("web\\t3\\t3\\t3\\t3\\tT\\n");
        load();
    } else if (event == u"clear"_s) {
        m_table->clear();
    } else if (event == u"filter"_s) {
        m_table->setFilter(u"w"_s);
    } else {
        if (event.startsWith(u"leave"_s)) {
            m_table->tableView().setFocus();
        }
        m_table->hide();
        settle();
        QCOMPARE(db->field()->value(), 2);
        m_table->show();
    }
    settle();
    QVERIFY(!question());
    QStringList names;
    for (int row = 0; row < m_table->arrangedObjects().rowCount(); ++row) {
        names.append(m_table->arrangedObjects().arrangedRow(row)->name);
        QCOMPARE(deployment(*m_table, row).desired, names.last() == u"db"_s ? 2 : 3);
    }
    QCOMPARE(names, left);
    QTRY_COMPARE(m_table->findChildren<ReplicaCell *>().size(), left.size());
}

void tst_workloads::notInAllNamespacesNorAfterAMove()
{
    setMainConsoleLookup([this] { return &m_window->recorded; });
    m_window->nameSpace = allNamespaces;
    open<DeploymentController>("web\\t3\\t3\\t3\\t3\\tT\\tteam\\n");
    QTRY_VERIFY(cell(u"web"_s));
    act(u"click:8"_s, *cell(u"web"_s));
    QVERIFY(!question());
    QVERIFY(m_window->recorded.entries.value(0).contains(u"Nothing was scaled: choose a namespace first"_s));
    QCOMPARE(cell(u"web"_s)->slider()->value(), 3);
    m_window->nameSpace = u"team"_s;
    act(u"click:8"_s, *cell(u"web"_s));
    m_window->nameSpace = u"other"_s;
    answer(u"Scale Deployment"_s);
    QVERIFY(m_window->recorded.entries.value(1).contains(u"another context or namespace"_s));
    QCOMPARE(cell(u"web"_s)->slider()->value(), 3);
    QCOMPARE(deployment(*m_table, 0).desired, 3);
    QCOMPARE(commands(), QStringList());
}

void tst_workloads::manySingleRowsSelected()
{
    RowStore model(deploymentKind());
    Rows rows;
    for (int i = 0; i < 16'000; ++i) {
        rows.push_back(std::make_shared<Deployment>(u"web-%1"_s.arg(i)));
    }
    model.appendRows(rows);
    ArrangingModel arranged(model);
    const ResourceTableView view(arranged);
    const auto timeFor = [&](int count) {
        QItemSelection selection;
        for (int row = 2 * (count - 1); row >= 0; row -= 2) { // from the bottom to the top
            selection.select(arranged.index(row, 0), arranged.index(row, arranged.columnCount() - 1));
        }
        view.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
        double best = 1e9;
        for (int round = 0; round < 3; ++round) {
            const double start = threadTime();
            if (view.selectedRowCount() != count || view.selectedRowsInOrder()[1] != 2
                || view.selectedRowsAsChosen().front() != 2 * (count - 1)) {
                return -1.0;
            }
            best = std::min(best, threadTime() - start);
        }
        return best;
    };
    const double few = timeFor(1000);
    const double many = timeFor(8000);
    qInfo("1,000 single rows %.2f ms, 8,000 %.2f ms", few, many);
    QVERIFY(few > 0 && many > 0);
    QVERIFY2(many < 24 * few, "grows faster than the number of rows");
}

void tst_workloads::cellsForWhatIsSeen()
{
    QByteArray many;
    for (int i = 0; i < 3000; ++i) {
        many += "web-" + QByteArray::number(i) + "\\t3\\t3\\t3\\t3\\tT\\n";
    }
    open<DeploymentController>(many);
    QTRY_VERIFY(m_table->findChildren<ReplicaCell *>().size() > 5);
    m_table->tableView().scrollToBottom();
    QTRY_VERIFY(cell(u"web-2999"_s));
    QVERIFY(m_table->findChildren<ReplicaCell *>().size() < 80); // two screens full
    // Tab goes through the current row only, and its slider can be reached from the table.
    m_table->tableView().setFocus();
    m_table->tableView().setCurrentIndex(m_table->arrangedObjects().index(2, 0));
    QTest::keyClick(&m_table->tableView(), Qt::Key_Tab);
    QVERIFY(cell(u"web-2"_s)->slider()->hasFocus());
    QTest::keyClick(cell(u"web-2"_s)->slider(), Qt::Key_Tab);
    QVERIFY(cell(u"web-2"_s)->field()->hasFocus());
    QTest::keyClick(cell(u"web-2"_s)->field(), Qt::Key_Tab);
    QVERIFY(!qobject_cast<ReplicaSlider *>(QApplication::focusWidget()));
    QVERIFY(!question());
}

void tst_workloads::scalesARealDeployment()
{
    const QString client = qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL");
    const DemoProcess demo({u"--still"_s}, client);
    QVERIFY(demo.isReady());
    setKubectlPath(client);
    m_window->facade.configPath = demo.kubeconfig();
    m_window->context = u"demo-harbor"_s;
    m_window->nameSpace = u"shop"_s;
    m_table = std::make_unique<DeploymentController>(*m_window);
    m_table->resize(1100, 400);
    m_table->show();
    load();
    QTRY_VERIFY(cell(u"wishlist"_s));
    act(u"type:13 return"_s, *cell(u"wishlist"_s));
    QSignalSpy reloaded(m_table.get(), &SharedContentViewController::loadFinished);
    answer(u"Scale Deployment"_s);
    QVERIFY(reloaded.wait(patience));
    const Outcome replicas = demo.kubectl({u"get"_s, u"deploy"_s, u"-nshop"_s, u"wishlist"_s,
        u"-ojsonpath={.spec.replicas} {.status.replicas}"_s});
    QCOMPARE(replicas.output, u"13 13"_s);
    QCOMPARE(cell(u"wishlist"_s)->slider()->value(), 13);
}

/// Opens the context menu of a row, triggers the command of that title, and returns the titles of those that
/// are enabled.
QStringList tst_workloads::menuOf(int row, const QString &triggered)
{
    QStringList titles;
    QMetaObject::invokeMethod(
        this,
        [&titles, triggered] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QAction *chosen = nullptr;
            for (QAction *action : menu->actions()) {
                if (action->isEnabled() && !action->isSeparator()) {
                    titles.append(action->text());
                    chosen = action->text() == triggered ? action : chosen;
                }
            }
            if (chosen) {
                chosen->trigger();
            }
            menu->close();
        },
        Qt::QueuedConnection);
    ResourceTableView &view = m_table->tableView();
    const QPoint where = row < 0 ? QPoint(5, view.viewport()->height() - 5)
                                 : view.visualRect(m_table->arrangedObjects().index(row, 0)).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, where, view.viewport()->mapToGlobal(where));
    QCoreApplication::sendEvent(view.viewport(), &event);
    return titles;
}

void tst_workloads::listingsAfterTrouble_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("times");
    QTest::addColumn<QString>("problem");
    QTest::addColumn<bool>("failed");
    const auto row = [](const char *name, const QByteArray &script, int times, const QString &problem,
                         bool failed) { QTest::newRow(name) << script << times << problem << failed; };
    row("well", "out\n", 2, {}, false);
    row("warned", "err\nWarning: old API", 2, u"Warning: old API"_s, false);
    row("failed", "err\nno route\nexit\n1", 1, u"no route"_s, true);
    row("failed twice", "err\nno route\nexit\n1", 2, u"no route"_s, true);
}

/// The timer of a table goes on as ever, unless the cluster fails again and again while nobody is there.
void tst_workloads::listingsAfterTrouble()
{
    QFETCH(QByteArray, script);
    QFETCH(int, times);
    QFETCH(bool, failed);
    setKubectlPath(fakeToolPath());
    qputenv("FAKE_TOOL_SCRIPT", script);
    RowStore store(deploymentKind());
    TableLoader loader(store, *m_window);
    for (int time = 0; time < times; ++time) {
        QSignalSpy finished(&loader, &TableLoader::finished);
        loader.load({.unattended = true});
        QVERIFY(finished.wait(patience));
    }
    QTEST(loader.problem(), "problem");
    QCOMPARE(loader.hasFailed(), failed);
    loader.userIsBack();
    QCOMPARE(loader.isLoading(), failed && times > 1);
    const auto lists = [&loader] {
        loader.refresh();
        return loader.isLoading();
    };
    QTRY_VERIFY(lists());
}

void tst_workloads::runNow_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("middle");
    QTest::newRow("short") << u"nightly"_s << u"nightly"_s;
    QTest::newRow("32 characters") << QString(32, u'a') << QString(32, u'a');
    QTest::newRow("40 characters") << u"a23456789-123456789-123456789-123456789z"_s
                                   << u"a23456789-123456789-123456789-12--"_s;
}

void tst_workloads::runNow()
{
    QFETCH(QString, name);
    QFETCH(QString, middle);
    setMainConsoleLookup([this] { return &m_window->recorded; });
    open<CronJobController>("other\\t@daily\\tfalse\\t\\t\\tT\\n" + name.toUtf8()
        + "\\t@daily\\tfalse\\t\\t\\tT\\n-x\\t\\t\\t\\t\\tT\\n");
    auto &table = static_cast<CronJobController &>(*m_table);
    table.runCronJobNow();
    QVERIFY(!table.runObstacle().isEmpty());
    table.tableView().selectRow(0);
    QVERIFY(table.runObstacle().isEmpty());
    QVERIFY(menuOf(1, u"Run Now"_s).contains(u"Run Now"_s)); // the clicked row, not the selected one
    QTRY_COMPARE(commands().size(), 1);
    const QRegularExpression expected(
        u"^create job --context=ctx -nteam --from=cronjob/%1 manually-run-%2-[a-z0-9]{5}$"_s.arg(
            name, middle));
    QVERIFY2(expected.match(commands().first()).hasMatch(), qPrintable(commands().first()));
    table.tableView().selectAll();
    QVERIFY(!table.runObstacle().isEmpty()); // which one?
    table.tableView().selectRow(2);
    table.runCronJobNow();
    QVERIFY(
        m_window->recorded.entries.last().contains(u"Nothing was run: kubectl would take the name \"-x\""_s));
    m_window->nameSpace = allNamespaces;
    table.runCronJobNow();
    QTRY_VERIFY(m_window->recorded.entries.last().contains(u"Nothing was run: choose a namespace first"_s));
    QCOMPARE(commands().size(), 1);
}

void tst_workloads::logs_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("target");
    QTest::newRow("deployments") << u"deployments"_s << u"deploy/"_s;
    QTest::newRow("jobs") << u"jobs"_s << u"job/"_s;
    QTest::newRow("services") << u"services"_s << u"svc/"_s;
    QTest::newRow("cron jobs") << u"cron jobs"_s << QString();
}

void tst_workloads::logs()
{
    QFETCH(QString, kind);
    QFETCH(QString, target);
    const QByteArray rest = kind == u"jobs"_s ? "\\t1\\t1\\t\\t\\t\\tT\\n" : "\\t\\t\\t\\t\\tT\\n";
    const QByteArray listing = "a" + rest + "b" + rest + "c" + rest;
    if (kind == u"deployments"_s) {
        open<DeploymentController>(listing);
    } else if (kind == u"jobs"_s) {
        open<JobController>(listing);
    } else if (kind == u"services"_s) {
        open<ServiceController>(listing);
    } else {
        open<CronJobController>(listing);
    }
    const QStringList needRows{u"Copy Name"_s, u"Quick Look"_s, u"View Logs"_s};
    const auto offered = [&needRows](const QStringList &titles) {
        return QStringList(needRows).removeIf(
            [&titles](const QString &title) { return titles.contains(title); });
    };
    QCOMPARE(offered(menuOf(-1, QString())), 0); // beside the rows, nothing selected
    m_table->viewLogs();
    QVERIFY(m_window->logsOpened.empty());
    if (target.isEmpty()) {
        m_table->tableView().selectAll();
        m_table->viewLogs();
        QVERIFY(m_window->logsOpened.empty());
        QVERIFY(!m_table->viewLogsObstacle().isEmpty());
        return;
    }
    QVERIFY(!m_table->viewLogsObstacle().isEmpty());
    QCOMPARE(offered(menuOf(1, u"View Logs"_s)), 3);
    m_table->tableView().selectAll();
    QVERIFY(m_table->viewLogsObstacle().isEmpty());
    m_table->viewLogs();
    QCOMPARE(offered(menuOf(2, u"View Logs"_s)), 3); // the clicked row alone
    const auto pair = [&target](const char *name) {
        return ContainerPair(target + QLatin1String(name), u"--all-containers"_s);
    };
    const std::vector<std::vector<ContainerPair>> expected{
        {pair("b")}, {pair("a"), pair("b"), pair("c")}, {pair("c")}};
    QCOMPARE(m_window->logsOpened, expected);
    pretend("-f" + rest);
    load();
    m_table->tableView().selectAll();
    m_table->viewLogs();
    QCOMPARE(m_window->logsOpened, expected);
    QVERIFY(m_window->recorded.entries.value(0).contains(u"No logs were opened: kubectl would take"_s));
}

QTEST_MAIN(tst_workloads)
#include "tst_workloads.moc"
