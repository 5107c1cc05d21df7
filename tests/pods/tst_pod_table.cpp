// SPDX-License-Identifier: GPL-3.0-or-later
// The pod table in a window, over the demo cluster through real kubectl, and over tools that misbehave.
#include "core/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/threads/MainQueue.h"
#include "platform/text/Timestamp.h"
#include "pods/table/ContainerButton.h"
#include "pods/table/ContainerCopy.h"
#include "pods/table/Pod.h"
#include "pods/table/PodController.h"
#include "resources/preview/PreviewFiles.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/TableStatusBar.h"
#include "support/Patience.h"
#include "support/StubWindow.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace tidewright;
using namespace tidewright::test;

namespace {

constexpr int patience = 30'000; // milliseconds, for what a real kubectl does on a busy machine

QStringList clients()
{
    QStringList paths{qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL")};
    if (const QString old = qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL_OLD"); !old.isEmpty()) {
        paths.append(old);
    }
    return paths;
}

/// What one line of the listing should have become, taken from the object's JSON.
struct Expected
{
    qint64 ready = 0;
    qint64 notReady = 0;
    qint64 restarts = 0;
    QString phase;
    QString start;
    QStringList containers;
};

QMap<QString, Expected> expectedPods(const QByteArray &json)
{
    QMap<QString, Expected> pods;
    for (const auto &value : QJsonDocument::fromJson(json)[QStringLiteral("items")].toArray()) {
        const QJsonValue pod(value.toObject());
        Expected expected;
        const QJsonValue status = pod[QStringLiteral("status")];
        for (const auto &container : status[QStringLiteral("containerStatuses")].toArray()) {
            const QJsonObject state = container.toObject();
            ++(state[QStringLiteral("ready")].toBool() ? expected.ready : expected.notReady);
            expected.restarts += state[QStringLiteral("restartCount")].toInteger();
        }
        expected.phase = status[QStringLiteral("phase")].toString();
        expected.start = status[QStringLiteral("startTime")].toString();
        for (const auto &container : pod[QStringLiteral("spec")][QStringLiteral("containers")].toArray()) {
            expected.containers.append(container.toObject()[QStringLiteral("name")].toString());
        }
        pods.insert(pod[QStringLiteral("metadata")][QStringLiteral("name")].toString(), expected);
    }
    return pods;
}

const Pod &podOf(const Row &row)
{
    return static_cast<const Pod &>(*row);
}

} // namespace

class PodTableTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<DemoProcess> m_demo;
    std::unique_ptr<StubWindow> m_window;
    std::unique_ptr<PodController> m_table;
    QTemporaryDir m_cache;

    void openTable(const QString &nameSpace)
    {
        m_window = std::make_unique<StubWindow>();
        m_window->facade.configPath = m_demo->kubeconfig();
        m_window->context = QStringLiteral("demo-harbor");
        m_window->nameSpace = nameSpace;
        m_table = std::make_unique<PodController>(*m_window);
        m_table->resize(1100, 500);
        m_table->show();
    }

    bool load(bool log = false)
    {
        QSignalSpy finished(m_table.get(), &SharedContentViewController::loadFinished);
        m_table->reloadLogging(log);
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

    QMessageBox *question() const { return m_table->findChild<QMessageBox *>(); }

private Q_SLOTS:
    void initTestCase()
    {
        setCacheDirectory(m_cache.path());
        mainQueue();
        m_demo = std::make_unique<DemoProcess>(QStringList{QStringLiteral("--still")}, clients().first());
        QVERIFY(m_demo->isReady());
    }

    void init()
    {
        setKubectlPath(clients().first());
        openTable(QStringLiteral("shop"));
    }

    void cleanup()
    {
        m_table.reset();
        qunsetenv("FAKE_TOOL_SCRIPT");
        setClockForTesting(nullptr);
        QVERIFY(m_demo->control("{\"hang\":false,\"fail\":0,\"latency\":0}"));
    }

    void everyFieldOfEveryPod_data()
    {
        QTest::addColumn<QString>("kubectl");
        QTest::addColumn<QString>("nameSpace");
        for (const QString &client : clients()) {
            for (const char *nameSpace : {"shop", "payments", "kube-system", "staging", "empty"}) {
                QTest::addRow("%s in %s", qPrintable(client.section(QLatin1Char('/'), -3)), nameSpace)
                    << client << QString::fromLatin1(nameSpace);
            }
        }
    }

    void everyFieldOfEveryPod()
    {
        QFETCH(QString, kubectl);
        QFETCH(QString, nameSpace);
        setKubectlPath(kubectl);
        m_window->nameSpace = nameSpace;
        QVERIFY(load());
        const auto expected = expectedPods(m_demo
                                               ->kubectl({QStringLiteral("get"), QStringLiteral("po"),
                                                   QStringLiteral("-n"), nameSpace, QStringLiteral("-ojson")})
                                               .output.toUtf8());
        QCOMPARE(m_table->problem(), QString());
        QCOMPARE(m_table->tableItems().size(), std::size_t(expected.size()));
        QCOMPARE(expected.isEmpty(), nameSpace == QLatin1String("empty"));
        for (const Row &row : m_table->tableItems()) {
            const Pod &pod = podOf(row);
            QVERIFY2(expected.contains(pod.name), qPrintable(pod.name));
            const Expected &want = expected[pod.name];
            QCOMPARE(pod.readyCount, want.ready);
            QCOMPARE(pod.notReadyCount, want.notReady);
            QCOMPARE(pod.restarts, want.restarts);
            QCOMPARE(pod.status, want.phase);
            QCOMPARE(pod.startTimeString, want.start);
            QCOMPARE(pod.containers, want.containers);
        }
        if (expected.isEmpty()) {
            QCOMPARE(m_table->tableView().accessibleDescription().section(QLatin1Char('\n'), 0, 0),
                QStringLiteral("No pods in namespace empty."));
        }
    }

    void readinessTextAndImage_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("image");
        QTest::addColumn<qint64>("restarts");
        const QString available = QStringLiteral("NSStatusAvailable");
        const QString unavailable = QStringLiteral("NSStatusUnavailable");
        const auto row
            = [](const char *tag, const char *line, const char *text, const QString &image, qint64 restarts) {
                  QTest::newRow(tag) << QByteArray(line) << QString::fromUtf8(text) << image << restarts;
              };
        row("all ready", "p\ttrue true\tRunning\t0 3\t\t\ta b", "2/2 Running", available, 3);
        row("half ready", "p\ttrue false\tRunning\t2 5\tError\t\ta b", "1/2 Running", unavailable, 7);
        row("completed", "p\tfalse\tSucceeded\t0\tCompleted\t\ta", "Succeeded",
            QStringLiteral("statusCompleted"), 0);
        row("reasons collapse", "p\tfalse false\tPending\t0 0\tContainerCreating ContainerCreating\t\ta b",
            "Pending: ContainerCreating", unavailable, 0);
        row("failed", "p\t\tFailed\t\t\t\ta", "Failed", unavailable, 0);
        row("counts that are none", "p\ttrue\tRunning\tx 9223372036854775807 4\t\t\ta", "1/1 Running",
            available, 9223372036854775807);
    }

    void readinessTextAndImage()
    {
        QFETCH(QByteArray, line);
        const MergeResult merged = mergeListing(podKind(), line, {});
        QCOMPARE(merged.added.size(), std::size_t(1));
        const Pod &pod = podOf(merged.added.front());
        QTEST(pod.isReadyText(), "text");
        QTEST(pod.isReadyImage(), "image");
        QTEST(pod.restarts, "restarts");
    }

    void sortFilterSelectionAndScrollSurviveRefreshes()
    {
        m_table->resize(1100, 140);
        QVERIFY(load());
        m_table->tableView().horizontalHeader()->setSortIndicator(0, Qt::DescendingOrder);
        m_table->tableView().setColumnWidth(1, 333);
        m_table->setFilter(QStringLiteral("E")); // without regard to case
        const int rows = m_table->arrangedObjects().rowCount();
        QVERIFY(rows > 3 && rows < int(m_table->tableItems().size()));
        selectRows({1, 3});
        QScrollBar *bar = m_table->tableView().verticalScrollBar();
        QTRY_VERIFY(bar->maximum() > 0); // laid out
        bar->setValue(bar->maximum());
        const int scrolled = bar->value();
        const QStringList chosen = m_table->chosenNames();
        QCOMPARE(chosen, (QStringList{name(1), name(3)}));

        QVERIFY(load());
        QCOMPARE(m_table->chosenNames(), chosen);
        QCOMPARE(bar->value(), scrolled);
        QCOMPARE(m_table->tableView().columnWidth(1), 333);
        QCOMPARE(m_table->filter(), QStringLiteral("E"));
        QVERIFY(name(0).compare(name(1), Qt::CaseInsensitive) > 0);
    }

    void containerButtonsToggleAndAreReplaced()
    {
        pretend("out\nweb\\ttrue true\\tRunning\\t0 0\\t\\t\\tzeta "
                "alpha\\ndb\\ttrue\\tRunning\\t0\\t\\t\\tpostgres\\n");
        QVERIFY(load());
        QTRY_COMPARE(m_table->containerButtons().size(), std::size_t(3));
        ContainerButton *alpha = buttonNamed(QStringLiteral("web:alpha"));
        QVERIFY(alpha->x() < buttonNamed(QStringLiteral("web:zeta"))->x());
        QTest::mouseClick(alpha, Qt::LeftButton);
        QTest::mouseClick(buttonNamed(QStringLiteral("db:postgres")), Qt::LeftButton);
        const std::vector<ContainerPair> both{{QStringLiteral("web"), QStringLiteral("alpha")},
            {QStringLiteral("db"), QStringLiteral("postgres")}};
        QCOMPARE(m_table->selectedContainerPairs(), both);

        // The same containers in another order: the buttons and their states stay.
        pretend("out\nweb\\ttrue true\\tRunning\\t0 9\\t\\t\\talpha "
                "zeta\\ndb\\ttrue\\tRunning\\t0\\t\\t\\tpostgres\\n");
        QVERIFY(load());
        QCOMPARE(m_table->selectedContainerPairs(), both);
        QCOMPARE(buttonNamed(QStringLiteral("web:alpha")), alpha);

        // Another container: new buttons, and what was chosen there no longer counts.
        pretend("out\nweb\\ttrue true\\tRunning\\t0 9\\t\\t\\talpha zeta "
                "new\\ndb\\ttrue\\tRunning\\t0\\t\\t\\tpostgres\\n");
        QVERIFY(load());
        QCOMPARE(m_table->selectedContainerPairs(), std::vector<ContainerPair>{both.back()});
        QTRY_COMPARE(m_table->containerButtons().size(), std::size_t(4));

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
            return ContainerPair(QLatin1String(pod), QStringLiteral("--all-containers"));
        };
        m_table->viewLogs();
        QVERIFY(m_window->logsOpened.empty());
        QVERIFY(!m_table->viewLogsObstacle().isEmpty());

        QTest::mouseClick(buttonNamed(QStringLiteral("mq:mq")), Qt::LeftButton);
        QTest::mouseClick(buttonNamed(QStringLiteral("web:side")), Qt::LeftButton);
        selectRows({0, 1});
        m_table->viewLogs(); // the buttons come first, and go off
        QVERIFY(m_table->selectedContainerPairs().empty());
        m_table->viewLogs();
        const auto fromMenuOf = [this](int row) {
            QMetaObject::invokeMethod(
                this,
                [] {
                    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                    for (QAction *action : menu->actions()) {
                        if (action->text() == QLatin1String("View Logs")) {
                            action->trigger();
                        }
                    }
                    menu->close();
                },
                Qt::QueuedConnection);
            QWidget *viewport = m_table->tableView().viewport();
            const QPoint where
                = m_table->tableView().visualRect(m_table->arrangedObjects().index(row, 0)).center();
            QContextMenuEvent event(QContextMenuEvent::Mouse, where, viewport->mapToGlobal(where));
            QCoreApplication::sendEvent(viewport, &event);
        };
        fromMenuOf(1); // one of the selected rows means all of them
        fromMenuOf(2); // another row means that row
        const std::vector<std::vector<ContainerPair>> expected{
            {{QStringLiteral("web"), QStringLiteral("side")}, {QStringLiteral("mq"), QStringLiteral("mq")}},
            {all("web"), all("db")}, {all("web"), all("db")}, {all("mq")}};
        QCOMPARE(m_window->logsOpened, expected);
    }

    void deletesWhatTheUserSawAndNothingElse()
    {
        QVERIFY(load());
        const auto count = m_table->tableItems().size();
        selectRows({0, 2});
        m_table->deleteRows();
        QCOMPARE(question()->informativeText(), QStringLiteral("Are you sure you want to delete 2 pods?"));
        QTest::keyClick(question(), Qt::Key_Return); // the harmless button is the default one
        QTRY_VERIFY(!question());
        QCOMPARE(m_window->settledAsked, 0);

        selectRows({0});
        const QString victim = name(0);
        const auto ask = [this] {
            m_table->deleteRows();
            return question()->findChildren<QPushButton *>();
        };
        const auto buttons = ask();
        QCOMPARE(question()->text(), QStringLiteral("Confirm Deletion"));
        QCOMPARE(question()->informativeText(),
            QStringLiteral("Are you sure you want to delete the pod \"%1\"?").arg(victim));
        for (QPushButton *button : buttons) {
            if (button->text() == QLatin1String("Delete")) {
                m_window->obstacle = QStringLiteral("not now");
                QTest::mouseClick(button, Qt::LeftButton);
                break;
            }
        }
        QTRY_COMPARE(m_window->settledAsked, 1); // a window that is not settled: nothing runs
        setMainConsoleLookup([this] { return &m_window->recorded; });
        m_window->obstacle.clear();
        QTRY_VERIFY(!question());
        for (QPushButton *button : ask()) {
            if (button->text() == QLatin1String("Delete")) {
                // delete acts on the kubeconfig's own context and namespace
                QCOMPARE(m_demo
                             ->kubectl({QStringLiteral("config"), QStringLiteral("set-context"),
                                 QStringLiteral("--current"), QStringLiteral("--namespace=shop")})
                             .exitCode,
                    0);
                QTest::mouseClick(button, Qt::LeftButton);
                break;
            }
        }
        QSignalSpy reloaded(m_table.get(), &SharedContentViewController::loadFinished);
        QVERIFY(reloaded.wait(patience));
        QCOMPARE(m_window->recorded.entries.size(), 2);
        QCOMPARE(m_window->recorded.entries.first(), QStringLiteral("||Nothing was deleted: not now"));
        QVERIFY(m_window->recorded.entries.last().startsWith(QLatin1String("kubectl delete po ") + victim));
        for (const Row &row : m_table->tableItems()) {
            QVERIFY(row->name != victim);
        }
        QVERIFY(m_table->tableItems().size() <= count);
        setMainConsoleLookup(nullptr);
    }

    void deletingInAllNamespacesIsRefused()
    {
        m_window->nameSpace = allNamespaces;
        QVERIFY(load());
        QVERIFY(m_table->tableItems().size() > 20);
        selectRows({0});
        m_table->deleteRows();
        m_table->showQuickLookPanel();
        m_table->viewLogs();
        QVERIFY(!question() && m_window->logsOpened.empty());
        QCOMPARE(m_window->recorded.entries.filter(QStringLiteral("choose a namespace first")).size(), 3);
        QCOMPARE(m_window->settledAsked, 0);
    }

    void namesThatLookLikeOptions()
    {
        pretend(
            "out\n--all\\ttrue\\tRunning\\t0\\t\\t\\tapp\\nweb\\ttrue\\tRunning\\t0\\t\\t\\t--profile=x\\n");
        QVERIFY(load());
        QTRY_COMPARE(m_table->containerButtons().size(), std::size_t(2));
        const QStringList paths{QStringLiteral("/dev/null")};
        const QString there = QStringLiteral("/tmp/");
        selectRows({0});
        m_table->viewLogs();
        m_table->deleteRows();
        copyIntoContainer(*m_table, {QStringLiteral("--all"), QStringLiteral("app")}, paths, there);
        QTest::mouseClick(buttonNamed(QStringLiteral("web:--profile=x")), Qt::LeftButton);
        m_table->viewLogs();
        copyIntoContainer(*m_table, {QStringLiteral("web"), QStringLiteral("--profile=x")}, paths, there);
        QVERIFY(m_window->logsOpened.empty() && !question());
        QStringList expected;
        for (const char *refusal : {"No logs were opened: kubectl would take the name \"--all\"",
                 "Nothing was deleted: kubectl would take the name \"--all\"",
                 "Nothing was copied: kubectl would take the name \"--all\"",
                 "No logs were opened: kubectl would take the name \"--profile=x\"",
                 "Nothing was copied: kubectl would take the name \"--profile=x\""}) {
            expected.append(QLatin1String("||") + QLatin1String(refusal) + QLatin1String(" for an option."));
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
        QTRY_VERIFY_WITH_TIMEOUT(text->toPlainText().contains(QLatin1String("kind: Pod")), patience);
        QVERIFY(text->toPlainText().contains(QLatin1String("name: ") + name(0)));
        const QFileInfo file(m_cache.filePath(QStringLiteral("shop-%1.yaml").arg(name(0))));
        QCOMPARE(
            file.permissions() & ~(QFile::ReadUser | QFile::WriteUser), QFile::ReadOwner | QFile::WriteOwner);

        QVERIFY(m_demo->control("{\"fail\":503}"));
        now += 5;
        m_table->showQuickLookPanel(); // within five seconds: nobody is asked
        QVERIFY(text->toPlainText().contains(QLatin1String("kind: Pod")));
        now += 0.5;
        m_table->showQuickLookPanel();
        QTRY_VERIFY_WITH_TIMEOUT(text->toPlainText().contains(QLatin1String("rror")), patience);
        QTest::keyClick(text, Qt::Key_Space);
        QVERIFY(!PreviewPanel::shared().isVisible());
        PreviewFiles::removeAll();
        QVERIFY(!QFile::exists(file.filePath()));
    }

    void copiesTheNameOfTheFirstChosenRow()
    {
        QVERIFY(load());
        QGuiApplication::clipboard()->setText(QStringLiteral("untouched"));
        m_table->copyName();
        QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("untouched"));
        selectRows({2});
        m_table->copyName();
        const QString copied = name(2);
        QCOMPARE(QGuiApplication::clipboard()->text(), copied);
        pretend("out\na\\x0drm\\x0d\\ttrue\\tRunning\\t0\\t\\t\\tapp\\n");
        QVERIFY(load());
        selectRows({0});
        m_table->copyName(); // pasted, it would run something
        QCOMPARE(QGuiApplication::clipboard()->text(), copied);
        QVERIFY(m_window->recorded.entries.last().contains(QLatin1String("The name was not copied: ")));
    }

    void aFailedLoadSaysWhyAndTheNextGoodOneFillsTheTable_data()
    {
        QTest::addColumn<QByteArray>("control"); // of the demo cluster
        QTest::addColumn<QByteArray>("script"); // of a tool in kubectl's place
        QTest::addColumn<QString>("kubeconfig");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<int>("rows");
        const QString none;
        QTest::newRow("forbidden") << QByteArray("{\"fail\":403}") << QByteArray() << none << "orbidden" << 0;
        QTest::newRow("server error") << QByteArray("{\"fail\":503}") << QByteArray() << none << "rror" << 0;
        QTest::newRow("missing kubeconfig") << QByteArray() << QByteArray() << "/nowhere/kubeconfig"
                                            << "does not exist" << 0;
        QTest::newRow("garbage") << QByteArray()
                                 << QByteArray("out\n<html>no cluster here</html>\\n\\x01\\x02\\n") << none
                                 << "<html>no cluster here</html>" << 0;
        QTest::newRow("not text") << QByteArray() << QByteArray("out\n\\xff\\xfe\\xff") << none
                                  << "it is not text" << 0;
        QTest::newRow("killed half-way")
            << QByteArray() << QByteArray("out\na\\ttrue\\tRunning\\t0\\t\\t\\tapp\\nb\\ttr\ndie\n9") << none
            << "ended by signal 9" << 1;
        QTest::newRow("a warning beside rows")
            << QByteArray() << QByteArray("err\nWarning: old API\nout\na\\ttrue\\tRunning\\t0\\t\\t\\tapp\\n")
            << none << "Warning: old API" << 1;
    }

    void aFailedLoadSaysWhyAndTheNextGoodOneFillsTheTable()
    {
        QFETCH(QByteArray, control);
        QFETCH(QByteArray, script);
        QFETCH(QString, kubeconfig);
        QFETCH(QString, reason);
        QFETCH(int, rows);
        QVERIFY(load());
        const auto good = m_table->tableItems().size();
        if (!control.isEmpty()) {
            QVERIFY(m_demo->control(control));
        } else if (!script.isEmpty()) {
            pretend(script);
        } else {
            m_window->facade.configPath = kubeconfig;
        }
        QVERIFY(load());
        QCOMPARE(int(m_table->tableItems().size()), rows);
        const QString shown = rows == 0 ? m_table->tableView().accessibleDescription() : m_table->problem();
        QVERIFY2(shown.contains(reason), qPrintable(shown));
        if (rows == 0) {
            QVERIFY(!m_table->tableView().grab().isNull()); // the reason can be painted
        }

        QVERIFY(m_demo->control("{\"fail\":0}"));
        setKubectlPath(clients().first());
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
        QTRY_VERIFY_WITH_TIMEOUT(status->timeText().contains(QLatin1String("Loading for")), patience);
        QVERIFY(m_table->isLoading());
        QTest::keyClick(&m_table->tableView(), Qt::Key_Escape);
        QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, patience);
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
        m_window->nameSpace = QStringLiteral("payments");
        m_table->clearAndReload(false);
        QVERIFY(m_table->tableItems().empty()); // at once
        QVERIFY(finished.wait(patience));
        const auto listed = m_demo->kubectl({QStringLiteral("get"), QStringLiteral("po"),
            QStringLiteral("-n"), QStringLiteral("payments"), QStringLiteral("-oname")});
        QCOMPARE(m_table->tableItems().size(), std::size_t(listed.output.count(QLatin1Char('\n'))));
        for (const Row &row : m_table->tableItems()) {
            QVERIFY(listed.output.contains(row->name));
        }
        QCOMPARE(finished.size(), 1);
    }
};

QTEST_MAIN(PodTableTest)
#include "tst_pod_table.moc"
