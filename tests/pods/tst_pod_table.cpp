// SPDX-License-Identifier: GPL-3.0-or-later
// The pod table in a window, over the demo cluster through real kubectl, and over tools that misbehave.
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/text/Timestamp.h"
#include "platform/threads/MainQueue.h"
#include "pods/table/ContainerButton.h"
#include "pods/table/ContainerCopy.h"
#include "pods/table/Pod.h"
#include "pods/table/PodController.h"
#include "resources/preview/PreviewFiles.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/TableStatusBar.h"
#include "support/OpenQuestion.h"
#include "support/Patience.h"
#include "support/StubWindow.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 30'000; // milliseconds, for what a real kubectl does on a busy machine

QString packagedKubectl()
{
    return qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL");
}

} // namespace

class TestPodTable : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<DemoProcess> m_demo;
    std::unique_ptr<StubWindow> m_window;
    std::unique_ptr<PodController> m_table;
    QTemporaryDir m_cache;

    bool load()
    {
        QSignalSpy finished(m_table.get(), &SharedContentViewController::loadFinished);
        m_table->reloadLogging(false);
        return finished.wait(patience);
    }

    void pretend(const QByteArray &script)
    {
        setKubectlPath(fakeToolPath());
        qputenv("FAKE_TOOL_SCRIPT", script);
    }

    void selectRows(std::initializer_list<int> rows)
    {
        m_table->tableView().clearSelection();
        for (const int row : rows) {
            m_table->tableView().selectionModel()->select(m_table->arrangedObjects().index(row, 0),
                QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }

    QString name(int row) const { return m_table->arrangedObjects().arrangedRow(row)->name; }

    ContainerButton *buttonNamed(const QString &accessibleName) const
    {
        for (ContainerButton *button : m_table->containerButtons()) {
            if (button->accessibleName() == accessibleName) {
                return button;
            }
        }
        return nullptr;
    }

    OpenQuestion question() const { return OpenQuestion::over(*m_table); }

private Q_SLOTS:
    void initTestCase()
    {
        setCacheDirectory(m_cache.path());
        mainQueue();
        m_demo = std::make_unique<DemoProcess>(QStringList{u"--still"_s}, packagedKubectl());
        QVERIFY(m_demo->isReady());
    }

    void init()
    {
        setKubectlPath(packagedKubectl());
        m_window = std::make_unique<StubWindow>();
        m_window->facade.configPath = m_demo->kubeconfig();
        m_window->context = u"demo-harbor"_s;
        m_window->nameSpace = u"shop"_s;
        m_table = std::make_unique<PodController>(*m_window);
        m_table->resize(1100, 500);
        m_table->show();
    }

    void cleanup()
    {
        m_table.reset();
        qunsetenv("FAKE_TOOL_SCRIPT");
        setClockForTesting(nullptr);
        QVERIFY(m_demo->control("{\"hang\":false,\"fail\":0,\"latency\":0}"));
    }

    void troubleComesFirst()
    {
        const ResourceKind kind = podKind();
        const MergeResult merged = mergeListing(kind,
            "done\tfalse\tSucceeded\t0\tCompleted\t\ta\nfine\ttrue\tRunning\t0\t\t\ta\n"
            "new\tfalse\tPending\t0\tContainerCreating\t\ta\nstuck\tfalse\tPending\t0\tErrImagePull\t\ta\n"
            "lame\tfalse true\tRunning\t0 0\t\t\ta b\nbroken\t\tFailed\t\t\t\ta",
            {});
        RowOrder order;
        order.reset(
            kind.columns, {{kind.indexOf(QLatin1String("status")), Qt::AscendingOrder}}, merged.added);
        std::vector<int> positions{0, 1, 2, 3, 4, 5};
        order.sort(positions);
        QStringList names;
        for (const int position : positions) {
            names << merged.added[static_cast<std::size_t>(position)]->name;
        }
        QCOMPARE(names.join(u' '), u"lame broken stuck new fine done"_s);
    }

    void sortFilterSelectionAndScrollSurviveRefreshes()
    {
        m_table->resize(1100, 140);
        QVERIFY(load());
        m_table->tableView().horizontalHeader()->setSortIndicator(0, Qt::DescendingOrder);
        m_table->tableView().setColumnWidth(2, 333);
        m_table->setFilter(u"E"_s); // without regard to case
        const int rows = m_table->arrangedObjects().rowCount();
        QVERIFY(rows > 3 && rows < int(m_table->tableItems().size()));
        selectRows({1, 3});
        QScrollBar *bar = m_table->tableView().verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 0); // laid out
        bar->setValue(bar->maximum());
        const int scrolled = bar->value();
        const ObjectNames chosen = m_table->chosenObjects();
        QCOMPARE(chosen, ObjectNames({{u"shop"_s, name(1)}, {u"shop"_s, name(3)}}));

        QVERIFY(load());
        QCOMPARE(m_table->chosenObjects(), chosen);
        QCOMPARE(bar->value(), scrolled);
        QCOMPARE(m_table->tableView().columnWidth(2), 333);
        QCOMPARE(m_table->filter(), u"E"_s);
        QVERIFY(name(0).compare(name(1), Qt::CaseInsensitive) > 0);
    }

    void containerButtonsToggleAndAreReplaced()
    {
        pretend("out\nweb\\ttrue true\\tRunning\\t0 0\\t\\t\\tzeta "
                "alpha\\ndb\\ttrue\\tRunning\\t0\\t\\t\\tpostgres\\n");
        QVERIFY(load());
        QTRY_COMPARE(m_table->containerButtons().size(), std::size_t(3));
        ContainerButton *alpha = buttonNamed(u"web:alpha"_s);
        QVERIFY(alpha->x() < buttonNamed(u"web:zeta"_s)->x());
        QTest::mouseClick(alpha, Qt::LeftButton);
        QTest::mouseClick(buttonNamed(u"db:postgres"_s), Qt::LeftButton);
        const std::vector<ContainerPair> both{
            {u"web"_s, u"alpha"_s, u"shop"_s}, {u"db"_s, u"postgres"_s, u"shop"_s}};
        QCOMPARE(m_table->selectedContainerPairs(), both);

        // The same containers in another order: the buttons and their states stay.
        pretend("out\nweb\\ttrue true\\tRunning\\t0 9\\t\\t\\talpha "
                "zeta\\ndb\\ttrue\\tRunning\\t0\\t\\t\\tpostgres\\n");
        QVERIFY(load());
        QCOMPARE(m_table->selectedContainerPairs(), both);
        QCOMPARE(buttonNamed(u"web:alpha"_s), alpha);

        // Another container: new buttons, and what was chosen there no longer counts.
        pretend("out\nweb\\ttrue true\\tRunning\\t0 9\\t\\t\\talpha zeta "
                "new\\ndb\\ttrue\\tRunning\\t0\\t\\t\\tpostgres\\n");
        QVERIFY(load());
        QCOMPARE(m_table->selectedContainerPairs(), std::vector<ContainerPair>{both.back()});
        QTRY_COMPARE(m_table->containerButtons().size(), std::size_t(4));

        pretend("out\ncrowd\\ttrue\\tRunning\\t0\\t\\t\\t" + QByteArray("c ").repeated(10'000) + "\\n");
        QVERIFY(load());
        QTRY_COMPARE(m_table->containerButtons().size(), std::size_t(100));
        QTRY_COMPARE(m_table->tableView().viewport()->findChild<QLabel *>()->text(), u"and 9,900 more"_s);

        pretend("out\n\\n");
        QVERIFY(load());
        QTRY_VERIFY(m_table->containerButtons().empty());
    }

    void logsOfContainersElseOfPods()
    {
        pretend("out\nweb\\ttrue\\tRunning\\t0\\t\\t\\tapp "
                "side\\ndb\\ttrue\\tRunning\\t0\\t\\t\\tpg\\nmq\\ttrue\\tRunning\\t0\\t\\t\\tmq\\n");
        QVERIFY(load());
        QTRY_COMPARE(m_table->containerButtons().size(), std::size_t(4));
        const auto all = [](const char *pod) {
            return ContainerPair(QLatin1String(pod), u"--all-containers"_s, u"shop"_s);
        };
        m_table->viewLogs();
        QVERIFY(m_window->logsOpened.empty());
        QVERIFY(!m_table->viewLogsObstacle().isEmpty());

        QTest::mouseClick(buttonNamed(u"mq:mq"_s), Qt::LeftButton);
        QTest::mouseClick(buttonNamed(u"web:side"_s), Qt::LeftButton);
        selectRows({0, 1});
        m_table->viewLogs(); // the buttons come first, and go off
        QVERIFY(m_table->selectedContainerPairs().empty());
        m_table->viewLogs();
        const std::vector<std::vector<ContainerPair>> expected{
            {{u"web"_s, u"side"_s, u"shop"_s}, {u"mq"_s, u"mq"_s, u"shop"_s}}, {all("web"), all("db")}};
        QCOMPARE(m_window->logsOpened, expected);
    }

    void deletesWhatTheUserSawAndNothingElse()
    {
        QVERIFY(load());
        selectRows({0, 2});
        m_table->deleteRows();
        QCOMPARE(question().message(), u"Are you sure you want to delete 2 pods?"_s);
        QTest::keyClick(question(), Qt::Key_Return); // the harmless button is the default one
        QTRY_VERIFY(!question());
        m_table->deleteRows();
        QTest::keyClick(question(), Qt::Key_Escape);
        QTRY_VERIFY(!question());
        QCOMPARE(m_window->settledAsked, 0);

        selectRows({0});
        const QString victim = name(0);
        setMainConsoleLookup([this] { return &m_window->recorded; });
        m_table->deleteRows();
        QCOMPARE(question().title(), u"Confirm Deletion"_s);
        QCOMPARE(question().message(), u"Are you sure you want to delete the pod \"%1\"?"_s.arg(victim));
        // delete acts on the window's own context and namespace
        QCOMPARE(
            m_demo->kubectl({u"config"_s, u"set-context"_s, u"--current"_s, u"--namespace=shop"_s}).exitCode,
            0);
        QSignalSpy reloaded(m_table.get(), &SharedContentViewController::loadFinished);
        question().press(u"Delete"_s);
        QVERIFY(reloaded.wait(patience));
        QCOMPARE(m_window->recorded.entries.size(), 1);
        QVERIFY(m_window->recorded.entries.last().startsWith(u"kubectl delete po "_s + victim));
        for (const Row &row : m_table->tableItems()) {
            QVERIFY(row->name != victim);
        }
        setMainConsoleLookup(nullptr);
    }

    void namesThatLookLikeOptions()
    {
        pretend(
            "out\n--all\\ttrue\\tRunning\\t0\\t\\t\\tapp\\nweb\\ttrue\\tRunning\\t0\\t\\t\\t--profile=x\\n");
        QVERIFY(load());
        QTRY_COMPARE(m_table->containerButtons().size(), std::size_t(2));
        const QStringList paths{u"/dev/null"_s};
        const QString there = u"/tmp/"_s;
        selectRows({0});
        m_table->viewLogs();
        m_table->deleteRows();
        copyIntoContainer(*m_table, {u"--all"_s, u"app"_s, m_window->nameSpace}, paths, there);
        QTest::mouseClick(buttonNamed(u"web:--profile=x"_s), Qt::LeftButton);
        m_table->viewLogs();
        copyIntoContainer(*m_table, {u"web"_s, u"--profile=x"_s, m_window->nameSpace}, paths, there);
        QVERIFY(m_window->logsOpened.empty() && !question());
        QStringList expected;
        for (const char *refusal : {"No logs were opened: kubectl would take the name \"--all\"",
                 "Nothing was deleted: kubectl would take the name \"--all\"",
                 "Nothing was copied: kubectl would take the name \"--all\"",
                 "No logs were opened: kubectl would take the name \"--profile=x\"",
                 "Nothing was copied: kubectl would take the name \"--profile=x\""}) {
            expected.append(u"||"_s + QLatin1String(refusal) + u" for an option."_s);
        }
        QCOMPARE(m_window->recorded.entries, expected);
    }

    void previewIsReusedForFiveSeconds()
    {
        static double now = 1'800'000'000;
        setClockForTesting([] { return now; });
        QVERIFY(load());
        selectRows({0});
        m_table->showQuickLookPanel();
        auto *text = PreviewPanel::shared().findChild<QPlainTextEdit *>();
        QTRY_VERIFY(text->toPlainText().contains(u"kind: Pod"_s));
        QVERIFY(text->toPlainText().contains(u"name: "_s + name(0)));
        const QFileInfo file(m_cache.filePath(u"shop-%1.yaml"_s.arg(name(0))));
        QCOMPARE(
            file.permissions() & ~(QFile::ReadUser | QFile::WriteUser), QFile::ReadOwner | QFile::WriteOwner);

        QVERIFY(m_demo->control("{\"fail\":503}"));
        now += 5;
        m_table->showQuickLookPanel(); // within five seconds: nobody is asked
        QVERIFY(text->toPlainText().contains(u"kind: Pod"_s));
        for (const double step : {0.5, -3600.0}) { // the clock may be set back
            now += step;
            m_table->showQuickLookPanel();
            QTRY_VERIFY(text->toPlainText().contains(u"rror"_s));
            QVERIFY(m_demo->control("{\"fail\":0}"));
            m_table->showQuickLookPanel();
            QTRY_VERIFY(text->toPlainText().contains(u"kind: Pod"_s));
            QVERIFY(m_demo->control("{\"fail\":503}"));
        }
        now += 9; // a warning, and more than is shown
        pretend("err\nWarning:\\n\nout\nfirst\nfill\n5000000");
        m_table->showQuickLookPanel();
        QTRY_VERIFY(text->toPlainText().endsWith(
            u"# This is the beginning of 4.77 MiB. The whole is in the file "_s + file.filePath()));
        QCOMPARE(QFile(file.filePath()).size(), 5'000'004);
        QVERIFY(text->toPlainText().startsWith(u"first0123"_s) && text->toPlainText().size() < 4'200'000);
        QTest::keyClick(text, Qt::Key_Space);
        QVERIFY(!PreviewPanel::shared().isVisible());
        PreviewFiles::removeAll();
        QVERIFY(!QFile::exists(file.filePath()));
    }

    void copiesTheNameOfTheFirstChosenRow()
    {
        QVERIFY(load());
        QGuiApplication::clipboard()->setText(u"untouched"_s);
        m_table->copyName();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"untouched"_s);
        selectRows({2});
        m_table->copyName();
        const QString copied = name(2);
        QCOMPARE(QGuiApplication::clipboard()->text(), copied);
        pretend("out\na\\x0drm\\x0d\\ttrue\\tRunning\\t0\\t\\t\\tapp\\n");
        QVERIFY(load());
        selectRows({0});
        m_table->copyName(); // pasted, it would run something
        QCOMPARE(QGuiApplication::clipboard()->text(), copied);
        QVERIFY(m_window->recorded.entries.last().contains(u"The name was not copied: "_s));
    }

    void aFailedLoadSaysWhyAndTheNextGoodOneFillsTheTable_data()
    {
        // The trouble is the demo cluster's, a kubeconfig that is missing, or a tool's in kubectl's place.
        QTest::addColumn<QByteArray>("trouble");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<int>("rows");
        const auto row = [](const char *name, const char *trouble, const char *reason, int rows) {
            QTest::newRow(name) << QByteArray(trouble) << QString::fromLatin1(reason) << rows;
        };
        row("forbidden", "{\"fail\":403}", "orbidden", 0);
        row("server error", "{\"fail\":503}", "rror", 0);
        row("missing kubeconfig", "/nowhere/kubeconfig", "does not exist", 0);
        row("garbage", "out\n<html>no cluster here</html>\\n\\x01\\x02\\n", "<html>no cluster here</html>",
            0);
        row("not text", "out\n\\xff\\xfe\\xff", "it is not text", 0);
        row("killed half-way", "out\na\\ttrue\\tRunning\\t0\\t\\t\\tapp\\nb\\ttr\ndie\n9",
            "ended by signal 9", 1);
        row("a warning beside rows", "err\nWarning: old API\nout\na\\ttrue\\tRunning\\t0\\t\\t\\tapp\\n",
            "Warning: old API", 1);
    }

    void aFailedLoadSaysWhyAndTheNextGoodOneFillsTheTable()
    {
        QFETCH(QByteArray, trouble);
        QFETCH(QString, reason);
        QFETCH(int, rows);
        QVERIFY(load());
        const auto good = m_table->tableItems().size();
        if (trouble.startsWith('{')) {
            QVERIFY(m_demo->control(trouble));
        } else if (trouble.startsWith('/')) {
            m_window->facade.configPath = QString::fromLatin1(trouble);
        } else {
            pretend(trouble);
        }
        QVERIFY(load());
        QCOMPARE(int(m_table->tableItems().size()), rows);
        const QString shown = rows == 0 ? m_table->tableView().accessibleDescription() : m_table->problem();
        QVERIFY2(shown.contains(reason), qPrintable(shown));
        if (rows == 0) {
            QVERIFY(!m_table->tableView().grab().isNull()); // the reason can be painted
        }

        QVERIFY(m_demo->control("{\"fail\":0}"));
        setKubectlPath(packagedKubectl());
        m_window->facade.configPath = m_demo->kubeconfig();
        QVERIFY(load());
        QCOMPARE(m_table->tableItems().size(), good);
        QCOMPARE(m_table->problem(), QString());
    }

    void aServerThatNeverAnswersCanBeStopped()
    {
        QVERIFY(load());
        const auto good = m_table->tableItems().size();
        const QDateTime asOf = m_table->rowsAsOf();
        QVERIFY(m_demo->control("{\"hang\":true}"));
        QSignalSpy finished(m_table.get(), &SharedContentViewController::loadFinished);
        m_table->reloadLogging(false);
        m_table->reloadLogging(false);
        const auto *status = m_table->findChild<TableStatusBar *>();
        QTRY_VERIFY(status->timeText().contains(u"Loading for"_s));
        QVERIFY(m_table->isLoading());
        QTest::keyClick(&m_table->tableView(), Qt::Key_Escape);
        QTRY_COMPARE(finished.size(), 2);
        QVERIFY(!m_table->isLoading());
        QCOMPARE(m_table->tableItems().size(), good);
        QCOMPARE(m_table->rowsAsOf(), asOf); // the rows are as old as they say
    }

    void rowsOfAnotherNamespaceNeverAppear()
    {
        QVERIFY(load());
        QVERIFY(m_demo->control("{\"latency\":300}"));
        QSignalSpy finished(m_table.get(), &SharedContentViewController::loadFinished);
        m_table->reloadLogging(false);
        m_window->nameSpace = u"payments"_s;
        m_table->clearAndReload({});
        QVERIFY(m_table->tableItems().empty()); // at once
        QVERIFY(finished.wait(patience));
        const auto listed = m_demo->kubectl({u"get"_s, u"po"_s, u"-n"_s, u"payments"_s, u"-oname"_s});
        QCOMPARE(m_table->tableItems().size(), std::size_t(listed.output.count(u'\n')));
        for (const Row &row : m_table->tableItems()) {
            QVERIFY(listed.output.contains(row->name));
        }
        QCOMPARE(finished.size(), 1);
    }
};

QTEST_MAIN(TestPodTable)
#include "tst_pod_table.moc"
