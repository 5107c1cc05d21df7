// SPDX-License-Identifier: GPL-3.0-or-later
// Tables in windows driven by mouse and keys: refreshing, previews, columns, scaling, cron jobs, logs.
#include "core/running/ApplicationRecord.h"
#include "platform/text/Timestamp.h"
#include "platform/threads/MainQueue.h"
#include "resources/controllers/CronJobController.h"
#include "resources/controllers/DeploymentController.h"
#include "resources/controllers/ReplicaCell.h"
#include "resources/controllers/ServiceController.h"
#include "resources/kinds/Deployment.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/table/ResourceTableView.h"
#include "resources/widgets/NamedImages.h"
#include "support/OpenQuestion.h"
#include "support/Patience.h"
#include "support/StubWindow.h"

#include <QContextMenuEvent>
#include <QFile>
#include <QHeaderView>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStyleOptionSlider>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>

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

class TestWorkloads : public QObject
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
    qsizetype recorded(const QByteArray &text) const
    {
        QFile file(record());
        return file.open(QIODevice::ReadOnly) ? file.readAll().count(text) : 0;
    }
    ReplicaCell *cell(const QString &name) const
    {
        for (ReplicaCell *candidate : m_table->findChildren<ReplicaCell *>()) {
            if (candidate->deployment().name == name) {
                return candidate;
            }
        }
        return nullptr;
    }
    OpenQuestion question() const { return OpenQuestion::over(*m_table); }
    void answer(const QString &title)
    {
        question().press(title);
        QTRY_VERIFY(!question());
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

    /// Words: drag:N, click:N, release, keys (a slider key held down), key:NAME in the slider, type:N,
    /// return, escape, leave.
    void act(const QString &how, ReplicaCell &cell)
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
                QTest::keyClick(cell.field()->hasFocus() ? static_cast<QWidget *>(cell.field()) : &slider,
                    Qt::Key_Escape);
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
    /// Lets what was put off until the present work is done happen.
    static void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::MetaCall); }

    /// Triggers the command of that title in the open menu; returns the titles of those that are enabled.
    static QStringList trigger(const QString &title)
    {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QStringList titles;
        QAction *chosen = nullptr;
        for (QAction *action : menu->actions()) {
            if (action->isEnabled() && !action->isSeparator()) {
                titles.append(action->text());
                chosen = action->text() == title ? action : chosen;
            }
        }
        if (chosen) {
            chosen->trigger();
        }
        menu->close();
        return titles;
    }
    /// The same in the context menu of a row.
    QStringList menuOf(int row, const QString &triggered)
    {
        QStringList titles;
        QMetaObject::invokeMethod(
            this, [&] { titles = trigger(triggered); }, Qt::QueuedConnection);
        ResourceTableView &view = m_table->tableView();
        const QPoint where = row < 0 ? QPoint(5, view.viewport()->height() - 5)
                                     : view.visualRect(m_table->arrangedObjects().index(row, 0)).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, where, view.viewport()->mapToGlobal(where));
        QCoreApplication::sendEvent(view.viewport(), &event);
        return titles;
    }

private Q_SLOTS:
    void initTestCase() { mainQueue(); }

    void init()
    {
        m_window = std::make_unique<StubWindow>();
        m_window->context = u"ctx"_s;
        m_window->nameSpace = u"team"_s;
        qputenv("FAKE_TOOL_RECORD", record().toUtf8());
    }

    void cleanup()
    {
        m_table.reset();
        setClockForTesting(nullptr);
        setMainConsoleLookup(nullptr);
        qunsetenv("FAKE_TOOL_SCRIPT");
        qunsetenv("FAKE_TOOL_RECORD");
        QFile::remove(record());
    }

    void oneQuestionForOneChange_data()
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
    void oneQuestionForOneChange()
    {
        QFETCH(QString, how);
        QFETCH(int, to);
        open<DeploymentController>("web\\t3\\t3\\t3\\t3\\tT\\n");
        QTRY_VERIFY(cell(u"web"_s));
        ReplicaCell &web = *cell(u"web"_s);
        QCOMPARE(web.slider()->accessibleName(), u"web replicas"_s);
        QCOMPARE(web.field()->accessibleName(), u"web replicas"_s);
        act(how, web);
        QCOMPARE(OpenQuestion::all(*m_table).size(), to < 0 ? 0 : 1);
        if (to >= 0) {
            QCOMPARE(question().title(), u"Confirm Scale"_s);
            QCOMPARE(question().message(),
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

    void scaleAndRun()
    {
        open<DeploymentController>("web\\t3\\t3\\t3\\t3\\tT\\ndb\\t2\\t2\\t2\\t2\\tT\\n");
        QTRY_VERIFY(cell(u"db"_s));
        act(u"click:8"_s, *cell(u"db"_s));
        QVERIFY(question().says(u"Context: ctx\nNamespace: team"_s));
        QCOMPARE(deployment(*m_table, 1).previousDesired, 2);
        answer(u"Scale Deployment"_s);
        QCOMPARE(cell(u"db"_s)->field()->value(), 8);
        QCOMPARE(deployment(*m_table, 1).previousDesired, 8);
        QCOMPARE(deployment(*m_table, 1).desired, 8);
        QTRY_COMPARE(commands(), QStringList{u"scale --context=ctx -nteam --replicas=8 deployment/db"_s});
        load(); // and then the cluster's own count is back
        QCOMPARE(deployment(*m_table, 1).desired, 2);
    }

    void refreshesWhileItIsShown()
    {
        static double now = 1'800'000'000;
        setClockForTesting([] { return now; });
        open<ServiceController>("web\\t\\t\\t\\t\\t2027-01-15T07:00:00Z\\n");
        auto *timer = m_table->findChild<QTimer *>(u"refreshTimer"_s);
        QCOMPARE(timer->interval(), 30'000);
        const QString go = m_folder.filePath(u"go"_s);
        qputenv("FAKE_TOOL_SCRIPT", "until\n" + go.toUtf8() + "\nout\nweb\\t\\t\\t\\t\\tT\\n");
        timer->setInterval(1);
        QSignalSpy ticks(timer, &QTimer::timeout);
        QTRY_COMPARE(recorded("\"get\"\n"), 1);
        QSignalSpy aged(&m_table->arrangedObjects(), &QAbstractItemModel::dataChanged);
        ticks.clear();
        QTRY_VERIFY(ticks.size() > 5);
        QCOMPARE(recorded("\"get\"\n"), 1); // a slow one is waited for
        QVERIFY(!aged.isEmpty()); // and the ages go on all the same
        m_table->hide();
        QVERIFY(!timer->isActive());
        QSignalSpy finished(m_table.get(), &SharedContentViewController::loadFinished);
        QVERIFY(QFile(go).open(QIODevice::WriteOnly));
        QTRY_COMPARE(finished.size(), 1);
        QCOMPARE(recorded("\"get\"\n"), 1);
        m_table->show();
        QTRY_VERIFY(finished.size() > 2); // again, again
        QFile::remove(go);
    }

    void previewsAreWalkedThrough()
    {
        open<ServiceController>("a\\t\\t\\t\\t\\tT\\nb\\t\\t\\t\\t\\tT\\nc\\t\\t\\t\\t\\tT\\n");
        PreviewPanel &panel = PreviewPanel::shared();
        auto *text = panel.findChild<QPlainTextEdit *>();
        const auto press = [&](Qt::Key key) {
            QTest::keyClick(text, key);
            return panel.windowTitle().section(u' ', 0, 0);
        };
        qputenv("FAKE_TOOL_SCRIPT", "out\nkind: Service");
        ResourceTableView &view = m_table->tableView();
        view.selectAll();
        m_table->showQuickLookPanel();
        QTRY_COMPARE(text->toPlainText(), u"kind: Service"_s);
        QCOMPARE(press(Qt::Key_Up), u"a"_s); // the first already
        QCOMPARE((QStringList{press(Qt::Key_Down), press(Qt::Key_Right), press(Qt::Key_Down)}),
            QStringList({u"b"_s, u"c"_s, u"c"_s}));
        view.selectRow(0); // while it is open
        QCOMPARE(panel.windowTitle(), u"a – Preview"_s);
        QCOMPARE(press(Qt::Key_Down), u"b"_s); // a single one: the selection itself moves
        QCOMPARE(m_table->selectedObjects(), ObjectNames({{u"team"_s, u"b"_s}}));
        QTRY_COMPARE(text->toPlainText(), u"kind: Service"_s);

        // What was coloured for a light desktop is coloured again for a dark one.
        const auto colour = [text] {
            return text->document()->firstBlock().layout()->formats().value(0).format.foreground().color();
        };
        const auto image = [] { return namedImage(u"pods-sidebar"_s).pixmap(32).toImage(); };
        const QColor lightText = colour();
        const QImage lightImage = image();
        QVERIFY(lightText.isValid());
        QApplication::setPalette(QPalette(QColor(40, 40, 40)));
        QTRY_VERIFY_WITH_TIMEOUT(colour().isValid() && colour() != lightText, 10'000);
        QVERIFY(image() != lightImage);
        QApplication::setPalette(QPalette());

        view.selectRow(2); // is being loaded when its table goes
        m_table.reset();
        QCOMPARE(press(Qt::Key_Up), u"c"_s);
        panel.close();
    }

    void columnsAreHiddenAndMoved()
    {
        const QByteArray row = "a\\tClusterIP\\t10.1.1.1\\t\\t80\\tT\\n";
        open<ServiceController>(row);
        const auto choose = [this](const QString &title) {
            QMetaObject::invokeMethod(
                this, [&title] { trigger(title); }, Qt::QueuedConnection);
            Q_EMIT m_table->tableView().horizontalHeader()->customContextMenuRequested({5, 5});
        };
        QHeaderView &header = *m_table->tableView().horizontalHeader();
        const QString first = m_table->arrangedObjects().headerData(0, Qt::Horizontal).toString();
        const QString second = m_table->arrangedObjects().headerData(2, Qt::Horizontal).toString();
        choose(first); // says what a row is, and stays
        choose(second);
        header.moveSection(header.visualIndex(3), 0);
        pretend(row + "b" + row.mid(1));
        load();
        QVERIFY(!header.isSectionHidden(0) && header.isSectionHidden(2));
        QCOMPARE(header.visualIndex(3), 0);
        choose(second);
        QVERIFY(!header.isSectionHidden(2));
    }

    void selectingThousandsOfSingleRows()
    {
        RowStore model(deploymentKind());
        Rows rows;
        for (int i = 0; i < 16'000; ++i) {
            rows.push_back(std::make_shared<Deployment>(u"web-%1"_s.arg(i)));
        }
        model.appendRows(rows);
        ArrangingModel arranged(model);
        const ResourceTableView view(arranged);
        QItemSelection selection;
        for (int row = 15'998; row >= 0; row -= 2) { // from the bottom to the top
            selection.select(arranged.index(row, 0), arranged.index(row, arranged.columnCount() - 1));
        }
        view.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
        const double start = threadTime();
        QCOMPARE(view.selectedRowCount(), 8000);
        QCOMPARE(view.selectedRowsInOrder()[1], 2);
        QCOMPARE(view.selectedRowsAsChosen().front(), 15'998);
        QVERIFY2(sanitized || threadTime() - start < 300, "grows faster than the number of rows");
    }

    void refreshLeavesTheKnobAlone()
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
        QVERIFY(question().message().endsWith(u"from 5 to 7?"_s));
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

    void theRowGoesUnderTheHand_data()
    {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QString>("event");
        QTest::addColumn<QStringList>("left");
        QTest::newRow("dragged, deleted elsewhere") << u"drag:7"_s << u"delete"_s << QStringList{u"web"_s};
        QTest::newRow("typed, filtered") << u"type:5"_s << u"filter"_s << QStringList{u"web"_s};
        QTest::newRow("typed, another tab") << u"type:5"_s << u"hide"_s << QStringList{u"web"_s, u"db"_s};
        QTest::newRow("let go, another tab")
            << u"type:5"_s << u"leave, hide"_s << QStringList{u"web"_s, u"db"_s};
    }
    void theRowGoesUnderTheHand()
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

    void notAfterAMove()
    {
        setMainConsoleLookup([this] { return &m_window->recorded; });
        open<DeploymentController>("web\\t3\\t3\\t3\\t3\\tT\\n");
        QTRY_VERIFY(cell(u"web"_s));
        act(u"click:8"_s, *cell(u"web"_s));
        m_window->nameSpace = u"other"_s;
        answer(u"Scale Deployment"_s);
        QVERIFY(m_window->recorded.entries.value(0).contains(u"another context or namespace"_s));
        QCOMPARE(cell(u"web"_s)->slider()->value(), 3);
        QCOMPARE(deployment(*m_table, 0).desired, 3);
        QCOMPARE(commands(), QStringList());
    }

    void cellsForWhatIsSeen()
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

    void runNow()
    {
        const QString name = u"a23456789-123456789-123456789-123456789z"_s; // too long for a job's
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
            u"^create job --context=ctx -nteam --from=cronjob/%1 manually-run-%2---[a-z0-9]{5}$"_s.arg(
                name, name.first(32)));
        QVERIFY2(expected.match(commands().first()).hasMatch(), qPrintable(commands().first()));
        QCOMPARE(commands().size(), 1);
    }

    void logs()
    {
        open<DeploymentController>("a\\t\\t\\t\\t\\tT\\nb\\t\\t\\t\\t\\tT\\nc\\t\\t\\t\\t\\tT\\n");
        const QStringList needRows{u"Copy Name"_s, u"Quick Look"_s, u"View Logs"_s};
        const auto offered = [&needRows](const QStringList &titles) {
            return QStringList(needRows).removeIf(
                [&titles](const QString &title) { return titles.contains(title); });
        };
        QCOMPARE(offered(menuOf(-1, QString())), 0); // beside the rows, nothing selected
        m_table->viewLogs();
        QVERIFY(m_window->logsOpened.empty() && !m_table->viewLogsObstacle().isEmpty());
        QCOMPARE(offered(menuOf(1, u"View Logs"_s)), 3);
        m_table->tableView().selectAll();
        QVERIFY(m_table->viewLogsObstacle().isEmpty());
        m_table->viewLogs();
        QCOMPARE(offered(menuOf(2, u"View Logs"_s)), 3); // the clicked row alone
        const auto pair = [](const char *name) {
            return ContainerPair(u"deploy/"_s + QLatin1String(name), u"--all-containers"_s, u"team"_s);
        };
        const std::vector<std::vector<ContainerPair>> expected{
            {pair("b")}, {pair("a"), pair("b"), pair("c")}, {pair("c")}};
        QCOMPARE(m_window->logsOpened, expected);
        open<CronJobController>("c\\t@daily\\tfalse\\t\\t\\tT\\n");
        m_table->tableView().selectAll();
        m_table->viewLogs(); // has none
        QCOMPARE(m_window->logsOpened, expected);
        QVERIFY(!m_table->viewLogsObstacle().isEmpty());
    }

    void listingsAfterTrouble_data()
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
    void listingsAfterTrouble()
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
};

QTEST_MAIN(TestWorkloads)
#include "tst_workloads.moc"
