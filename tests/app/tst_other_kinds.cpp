// SPDX-License-Identifier: GPL-3.0-or-later
// Kinds without a table of the house: what kubectl prints of them, and a window on the demo cluster.
#include "app/AppDelegate.h"
#include "app/content/OtherKinds.h"
#include "app/content/OtherKindsDialog.h"
#include "app/content/PrimaryContentController.h"
#include "app/content/SidebarController.h"
#include "app/state/KubeSplitViewController.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/text/Timestamp.h"
#include "resources/kinds/PrintedTable.h"
#include "resources/kinds/ServedKind.h"
#include "resources/listing/LoadProblem.h"
#include "resources/listing/Merge.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/SharedContentViewController.h"
#include "resources/table/TableStatusBar.h"
#include "support/OpenQuestion.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QLineEdit>
#include <QScopeGuard>
#include <QTest>
#include <QTreeView>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

constexpr auto definition = R"({"apiVersion": "apiextensions.k8s.io/v1", "kind": "CustomResourceDefinition",
    "metadata": {"name": "buoys.test.example"}, "spec": {"group": "test.example", "scope": "Namespaced",
    "names": {"plural": "buoys", "singular": "buoy", "kind": "Buoy", "shortNames": ["by"]},
    "versions": [{"name": "v1", "served": true, "storage": true,
    "schema": {"openAPIV3Schema": {"type": "object", "x-kubernetes-preserve-unknown-fields": true}},
    "additionalPrinterColumns": [{"name": "Light Colour", "type": "string", "jsonPath": ".spec.colour"},
    {"name": "Depth", "type": "integer", "jsonPath": ".spec.depth"}]}]}})";

QByteArray buoy(const char *name, const char *nameSpace, const char *colour, int depth)
{
    return QByteArrayLiteral(R"({"apiVersion": "test.example/v1", "kind": "Buoy", "metadata": {"name": ")")
        + name + R"(", "namespace": ")" + nameSpace + R"("}, "spec": {"colour": ")" + colour
        + R"(", "depth": )" + QByteArray::number(depth) + "}}";
}

} // namespace

class TestOtherKinds : public QObject
{
    Q_OBJECT
private:
    QTemporaryDir m_folder;
    UserDefaults m_settings{m_folder.filePath(u"settings.json"_s)};
    std::unique_ptr<DemoProcess> m_demo;
    std::unique_ptr<AppDelegate> m_delegate;

    MainWindowController &page() const { return *m_delegate->mainWindow()->currentPage(); }
    SharedContentViewController *table() const { return page().primaryContentController().shownTable(); }
    SidebarController &sidebar() const { return page().sidebarController(); }
    QTreeWidgetItem *item(const QString &text) const
    {
        return sidebar().findItems(text, Qt::MatchExactly | Qt::MatchRecursive).value(0);
    }

    /// What the sidebar says of that item, in its tool tip and to screen readers.
    QString told(const QString &text) const
    {
        return item(text)->data(0, Qt::AccessibleDescriptionRole).toString();
    }

    QString rows() const
    {
        QStringList lines;
        const ArrangingModel &model = table()->arrangedObjects();
        for (int row = 0; row < model.rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < model.columnCount(); ++column) {
                if (!table()->tableView().isColumnHidden(column)) {
                    cells.append(model.index(row, column).data().toString());
                }
            }
            lines.append(cells.join(u'|'));
        }
        return lines.join(u'\n');
    }

    QString status() const { return table()->findChild<TableStatusBar *>()->timeText(); }

    void create(const QByteArray &object) const
    {
        const Outcome made
            = m_demo->kubectl({u"create"_s, u"-f"_s, m_demo->writeFile(u"object.json"_s, object)});
        QVERIFY2(made.exitCode == 0, qPrintable(made.errors));
    }

    /// Opens a window and waits until it knows its namespace.
    void openWindow()
    {
        m_delegate->newDocument();
        QTRY_VERIFY(page().state().namespaceList().enabled);
        page().state().chooseNamespace(u"default"_s);
    }

    /// Types into the list of kinds and takes the first that is left.
    void choose(const QString &text) const
    {
        page().otherKinds().choose();
        const auto dialogs = m_delegate->mainWindow()->findChildren<OtherKindsDialog *>();
        QVERIFY(!dialogs.isEmpty());
        OtherKindsDialog *dialog = dialogs.last();
        const auto *list = dialog->findChild<QTreeView *>();
        QTRY_VERIFY(list->model()->rowCount() > 20);
        QTest::keyClicks(dialog->findChild<QLineEdit *>(), text);
        QCOMPARE(list->model()->rowCount(), 1);
        QTest::keyClick(dialog->findChild<QLineEdit *>(), Qt::Key_Return);
    }

private Q_SLOTS:
    void printedTables_data()
    {
        QTest::addColumn<QByteArray>("printed");
        QTest::addColumn<bool>("everywhere");
        QTest::addColumn<QByteArray>("rows"); // cells divided by "|", each row ends with ";"
        const auto row
            = [](const char *name, const char *printed, const char *rows, bool everywhere = false) {
                  QTest::newRow(name) << QByteArray(printed) << everywhere << QByteArray(rows);
              };
        row("single blanks", "NAME   LAST SEEN   STATE\na b    5 d ago     so so\n", "a b|5 d ago|so so;");
        row("empty cells",
            "NAME   A      B      AGE\n"
            "x                    4d\n"
            "y      1             \n"
            "z             2\n",
            "x|||4d;y|1||;z||2|;");
        row("several bytes a character, and wide ones",
            "NAME    FLAG    AGE\n"
            "größe   日本     4d\n"
            "größe           5d\n",
            "größe|日本|4d;größe||5d;");
        row("the namespace goes to the end",
            "NAMESPACE   NAME   AGE\nshop        x      4d\n            y      5d\n", "x|4d|shop;y|5d|;",
            true);
        row("no titles, no rows", "", "");
        row("titles alone", "NAME   AGE\n", "");
        row("a name behind others, line ends of another system", "ID    NAME   AGE\r\n1     x      4d\r\n",
            "x|1|4d;");
        row("titles once more, at other places",
            "NAME   AGE\nx      4d\nNAME           AGE\nlonger-name    5d\n", "x|4d;longer-name|5d;");
        row("out of place, but told apart", "NAME   A   AGE\nmuch-too-long   1   4d\n",
            "much-too-long|1|4d;");
        row("out of place", "NAME   A   AGE\nmuch-too-long   4d\nx      1   5d\n",
            "much-too-long   4d;x|1|5d;");
        row("a tab in a cell", "NAME   NOTE\nx      a\tb\n", "x|a b;");
    }
    void printedTables()
    {
        QFETCH(QByteArray, printed);
        QFETCH(bool, everywhere);
        QFETCH(QByteArray, rows);
        const QByteArray lines = listingLines(PrintedTable::parse(printed), everywhere);
        QCOMPARE(QByteArray(lines).replace('\t', '|').replace('\n', ';'), rows);
    }

    void longNamesKeepTheirColumns()
    {
        const QByteArray name(253, 'n');
        const QByteArray printed = QByteArray("NAME").leftJustified(256) + "AGE\n" + name + "   4d";
        QCOMPARE(listingLines(PrintedTable::parse(printed), false), name + "\t4d\n");
    }

    void order()
    {
        const auto sorted = [](QStringList cells, const QString &title) {
            std::stable_sort(cells.begin(), cells.end(), [&](const QString &a, const QString &b) {
                return printedSortKey(a, title) < printedSortKey(b, title);
            });
            return cells.join(u' ');
        };
        QCOMPARE(sorted({u"<none>"_s, u"10"_s, u"nan"_s, u"9"_s, u"-2"_s, u"-11"_s, u""_s, u"0.5"_s}, u"N"_s),
            u"-11 -2 0.5 9 10 nan <none> "_s);
        QCOMPARE(
            sorted({u"3y1d"_s, u"5d3h"_s, u"90m"_s, u"2h"_s, u"59s"_s, u"<unknown>"_s, u"124d"_s}, u"SEEN"_s),
            u"59s 90m 2h 5d3h 124d 3y1d <unknown>"_s);
        QCOMPARE(sorted({u"1"_s, u"250m"_s, u"3"_s}, u"CPU(CORES)"_s), u"250m 1 3"_s);
        QCOMPARE(sorted({u"1Gi"_s, u"20Mi"_s, u"100%"_s}, u"SIZE"_s), u"100% 20Mi 1Gi"_s);
        QCOMPARE(sorted({u"web-10"_s, u"web-2"_s}, u"HOST"_s), u"web-2 web-10"_s);
    }

    /// A table that nobody lists again grows older all the same, and one that is listed does not flicker.
    void ages()
    {
        static double now = 0;
        now = 1.7e9;
        setClockForTesting([] { return now; });
        const auto realClock = qScopeGuard([] { setClockForTesting(nullptr); });
        const ResourceKind kind = printedKind({u"buoys"_s, {}, u"Buoy"_s}, {u"NAME"_s, u"AGE"_s, u"LIT"_s});
        const auto list = [&kind](const QByteArray &age, const QByteArray &lit, const Rows &before) {
            return mergeListing(kind, "NAME   AGE         LIT\nx      " + age.leftJustified(12) + lit + '\n',
                before, LineForm::Plain);
        };
        Rows rows = list("3h5m", "no", {}).added;
        const auto age = [&](qsizetype passed) {
            now += static_cast<double>(passed);
            return kind.columns[1].text(*rows.front());
        };
        QCOMPARE(age(0), u"3h 5m"_s);
        QCOMPARE(age(3600), u"4h 5m"_s);
        QVERIFY(list("4h5m", "no", rows).changed.empty());
        QVERIFY(!showsSpanOfTime(*rows.front()));
        rows = {list("10s", "2m", rows).changed.at(0).second}; // another one of that name
        QCOMPARE(age(130), u"2m"_s);
        QVERIFY(showsSpanOfTime(*rows.front()));
        QCOMPARE(kind.columns[1].text(*list("<invalid>", "", {}).added.at(0)), u"<unknown>"_s);
    }

    void servedKinds_data()
    {
        QTest::addColumn<QByteArray>("printed");
        QTest::addColumn<QString>("kinds");
        QTest::newRow("short names missing, groups by themselves: no versions")
            << QByteArray("NAME       SHORTNAMES   APIGROUP       NAMESPACED   KIND\n"
                          "policies                a.example      true         Policy\n"
                          "pods       po                          true         Pod\n"
                          "TLSRoutes               b              false        TLSRoute\n"
                          "-x                      b              false        Option\n"
                          "oxen       o,ox         b.example      false        CastleMouse\n")
            << u"policies.a.example Policies ns; pods Pods ns; oxen.b.example Castle Mouse"_s;
        QTest::newRow("groups with versions")
            << QByteArray(
                   "NAME          SHORTNAMES   APIVERSION   NAMESPACED   KIND         VERBS\n"
                   "httproutes                 g/v1beta1    true         HTTPRoute    [list watch]\n"
                   "statuses                   v1           false        Status       [get list]\n"
                   "networkpods                v1           true         NetworkPod   get,list,watch\n")
            << u"httproutes.g HTTP Routes ns v1beta1; statuses Statuses; networkpods Network Pods ns v1"_s;
        QTest::newRow("an error in its place") << QByteArray("error: no\n") << QString();
    }
    void servedKinds()
    {
        QFETCH(QByteArray, printed);
        QFETCH(QString, kinds);
        const auto served = parseServedKinds(printed);
        QStringList found;
        for (const ServedKind &kind : served) {
            found.append(kind.resource() + u' ' + kind.title() + (kind.namespaced ? u" ns"_s : QString())
                + (kind.watchable && !kind.version.isEmpty() ? u' ' + kind.version : QString()));
        }
        QCOMPARE(found.join(u"; "_s), kinds);
        auto kept = servedKindsFromSetting(settingOf(served));
        QCOMPARE(kept.size(), served.size());
        for (std::size_t i = 0; i < kept.size(); ++i) {
            kept[i].shortNames = served[i].shortNames;
            QCOMPARE(kept[i] == served[i], served[i].watchable); // else to be asked for once more
        }
        QVERIFY(servedKindsFromSetting(u"-x//X/namespaced a/b rm -rf/ x y/g/K/cluster/-v y/g/K/cluster/v/w"_s)
                    .empty());
    }

    void obstacles()
    {
        const auto forbidden = u"Error from server (Forbidden): buoys is forbidden: User \"x\" cannot list"_s;
        QCOMPARE(kindObstacle(forbidden + u"\nmore"_s), forbidden);
        QVERIFY(
            !kindObstacle(u"Error from server (NotFound): Unable to list \"a/v1, Resource=b\""_s).isEmpty());
        QVERIFY(kindObstacle(u"Unable to connect to the server: EOF"_s).isEmpty());
        QVERIFY(kindObstacle(u"kubectl was ended by signal 9"_s).isEmpty());
    }

    void definedKind_data()
    {
        QTest::addColumn<QString>("kubectl");
        QTest::newRow("1.20") << qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL_OLD");
        QTest::newRow("today's") << qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL");
    }
    /// From the definition of a kind to its end, in a window.
    void definedKind()
    {
        QFETCH(QString, kubectl);
        setUserDefaultsForTesting(&m_settings);
        m_settings.remove(u"pinnedKinds"_s);
        applicationRecord() = {};
        setKubectlPath(kubectl);
        m_demo = std::make_unique<DemoProcess>(
            QStringList{u"--still"_s, u"--disturb"_s, u"cut:1,expire:1,end:1"_s}, kubectl);
        QVERIFY(m_demo->isReady());
        m_settings.set(u"defaultKubeConfigPath"_s, m_demo->kubeconfig());
        create(definition);
        create(buoy("inner", "default", "red", 9));
        create(buoy("outer", "default", "green", 10));
        create(buoy("outer", "kube-system", "white", 3));
        m_delegate = std::make_unique<AppDelegate>();
        openWindow();

        choose(u"stateful"_s);
        QCOMPARE(table()->kind().tableName, u"Stateful Sets"_s); // has a table of the house
        choose(u"buoy"_s);
        QTRY_COMPARE(rows(), u"inner|red|9\nouter|green|10"_s);
        QVERIFY(item(u"Buoys"_s) && item(u"Buoys"_s)->isSelected());
        page().primaryContentController().go(-1);
        QCOMPARE(table()->kind().tableName, u"Stateful Sets"_s);
        page().primaryContentController().go(1);
        QCOMPARE(table()->kind().tableName, u"Buoys"_s);
        page().otherKinds().setPinned(u"buoys.test.example"_s, true);

        // What somebody else changes comes by itself, though each stream breaks; numbers are sorted as such.
        for (const int depth : {30, 50, 70}) {
            QTRY_COMPARE(status(), u"Live"_s);
            const QString patch = u"-p{\"spec\":{\"depth\":%1}}"_s.arg(depth);
            QCOMPARE(
                m_demo->kubectl({u"patch"_s, u"by"_s, u"inner"_s, u"--type=merge"_s, patch}).exitCode, 0);
            QTRY_COMPARE(rows(), u"inner|red|%1\nouter|green|10"_s.arg(depth));
        }
        table()->arrangedObjects().sort(table()->arrangedObjects().columnCount() - 1, Qt::AscendingOrder);
        QCOMPARE(rows(), u"outer|green|10\ninner|red|70"_s);

        page().state().chooseNamespace(allNamespaces);
        QTRY_COMPARE(rows(), u"outer|kube-system|white|3\nouter|default|green|10\ninner|default|red|70"_s);
        table()->setFilter(u"kube-system"_s);
        table()->tableView().selectRow(0);
        table()->deleteRows();
        QTRY_VERIFY(OpenQuestion::over(*m_delegate->mainWindow()));
        OpenQuestion::over(*m_delegate->mainWindow()).press(u"Delete"_s);
        QTRY_VERIFY(m_demo->kubectl({u"get"_s, u"by"_s, u"outer"_s, u"-nkube-system"_s}).exitCode != 0);
        QCOMPARE(m_demo->kubectl({u"get"_s, u"by"_s, u"outer"_s}).exitCode, 0);

        page().otherKinds().close(u"buoys.test.example"_s);
        QVERIFY(!item(u"Buoys"_s));
        QCOMPARE(table()->kind().tableName, u"Pods"_s);
        openWindow(); // what is pinned comes back
        QVERIFY(item(u"Buoys"_s));
        sidebar().select(u"buoys.test.example"_s);
        QTRY_COMPARE(rows(), u"inner|red|70\nouter|green|10"_s);

        // Without its definition it is out of reach, and says so.
        QCOMPARE(m_demo->kubectl({u"delete"_s, u"crd"_s, u"buoys.test.example"_s}).exitCode, 0);
        table()->reload();
        QTRY_VERIFY(told(u"Buoys"_s).contains(u"the server doesn't have a resource type"_s));
        create(definition);
        table()->reload();
        QTRY_COMPARE(told(u"Buoys"_s), u"buoys.test.example, pinned"_s);

        Q_EMIT sidebar().closeRequested(u"buoys.test.example"_s); // by hand: it stays away
        QVERIFY(!item(u"Buoys"_s));
        openWindow();
        QVERIFY(!item(u"Buoys"_s));
    }
    void cleanup()
    {
        if (m_delegate) {
            m_delegate->applicationWillTerminate();
            m_delegate.reset();
        }
        m_demo.reset();
        setUserDefaultsForTesting(nullptr);
    }
};

QTEST_MAIN(TestOtherKinds)
#include "tst_other_kinds.moc"
