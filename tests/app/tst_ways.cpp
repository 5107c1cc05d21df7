// SPDX-License-Identifier: GPL-3.0-or-later
#include "App.h"
#include "app/content/SidebarController.h"
#include "app/toolbar/ClusterToolBar.h"
#include "app/toolbar/FilterField.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/preview/RelationsLine.h"
#include "resources/table/RelatedObjects.h"

#include <QTreeWidget>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

const QByteArray podListing = "web-1\ttrue\tRunning\t0\t\t2020-01-01T00:00:00Z\tapp\n"
                              "web-2\tfalse\tPending\t3\tImagePullBackOff\t2020-01-01T00:00:00Z\tapp\n";
const QByteArray deploymentListing = "alpha\t1\t1\t1\t1\tT\nbeta\t1\t1\t1\t1\tT\n";

QStringList offered(const FilterField &field)
{
    QStringList words;
    for (int i = 0; field.offerList()->isVisible() && i < field.offerList()->topLevelItemCount(); ++i) {
        words.append(field.offerList()->topLevelItem(i)->text(0));
    }
    return words;
}

QString selected(const App &app)
{
    const ObjectNames objects = app.table().selectedObjects();
    return app.table().kind().tableName + u':' + (objects.isEmpty() ? QString() : objects.first().name);
}

/// A key of a script: a word in braces, or a character.
void press(QWidget *field, QString keys)
{
    static const QHash<QString, Qt::Key> named{{u"tab"_s, Qt::Key_Tab}, {u"down"_s, Qt::Key_Down},
        {u"up"_s, Qt::Key_Up}, {u"return"_s, Qt::Key_Return}, {u"escape"_s, Qt::Key_Escape},
        {u"back"_s, Qt::Key_Backspace}};
    while (!keys.isEmpty()) {
        const QString name = keys.startsWith(u'{') ? keys.mid(1, keys.indexOf(u'}') - 1) : QString();
        if (name == u"ask") {
            QTest::keyClick(field, Qt::Key_Space, Qt::ControlModifier);
        } else if (!name.isEmpty()) {
            QTest::keyClick(field, named.value(name));
        } else {
            QTest::keyClicks(field, keys.left(1));
        }
        keys.remove(0, name.isEmpty() ? 1 : name.size() + 2);
    }
}

} // namespace

class TestWays : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void offers_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("offered");
        QTest::addColumn<int>("shown");
        const auto row = [](const char *keys, const char *text, const char *offers, int shown) {
            QTest::newRow(keys) << QString::fromLatin1(keys) << QString::fromLatin1(text)
                                << QString::fromUtf8(offers) << shown;
        };
        row("web", "web", "", 2);
        row("ST", "ST", "status:", 1);
        row("web -s", "web -s", "-status:", 2);
        row("st{tab}",
            "status:", "status:\"1/1 Running\" status:\"Pending: ImagePullBackOff\" status:ImagePullBackOff",
            3);
        row("st{tab}pull{down}{down}{return}", "status:ImagePullBackOff ", "", 1);
        row("st{tab}{down}{down}{up}{return}", "status:\"1/1 Running\" ", "", 2);
        row("st{tab}{up}{return}st", "status:ImagePullBackOff st", "status:", 0);
        row("res{tab}>{tab}", "restarts:>0 ", "", 1);
        row("ns:x{back}", "ns:", "", 3); // a table of one namespace knows no other
        row("s{down}", "s", "", 1); // on to the table, as without a list
        row("s{escape}", "s", "", 1);
        row("s{escape}{escape}", "", "", 3);
        row("?", "?", "ns: status: label: restarts: cpu: memory: age: containers: node: ip: created:", 3);
        row("?{up}{tab}<1", "created:<1", "created:<10m created:<1h created:<1d", 3);
        row("stone {ask}{tab}", "stone ns:", "", 1);
        row("foo:", "foo:", "This table has no column “foo”: the word is looked for in names.", 0);
    }
    void offers()
    {
        QFETCH(QString, keys);
        App app;
        app.cluster.answer(
            u"get po"_s, podListing + "stone\ttrue\tRunning\t0\t\t2020-01-01T00:00:00Z\tapp\n");
        app.open();
        FilterField *field = app.page().toolBar().filterField();
        field->setFocus();
        press(field, keys);
        QTEST(field->text(), "text");
        QTEST(offered(*field).join(u' '), "offered");
        QTEST(app.table().arrangedObjects().rowCount(), "shown");
    }

    void labelsAreAskedOfTheServer()
    {
        App app;
        app.open();
        FilterField *field = app.page().toolBar().filterField();
        const auto reads = [&] { return app.cluster.tableReads().filter(u"get po "_s); };
        const auto last = [&] { return reads().last().section(u" -o="_s, 0, 0); };
        app.cluster.forgetCalls();
        app.cluster.answer(u"get po"_s, {});
        field->setFocus();
        press(field, u"label:app=c"_s);
        QCOMPARE(reads(), QStringList()); // there may be more to come
        QVERIFY(QMetaObject::invokeMethod(app.table().findChild<QTimer *>(u"labelDelay"_s), "timeout"));
        QTRY_COMPARE(reads().size(), 1);
        QCOMPARE(last(), u"get po --context=b -ndefault -lapp=c"_s);
        QTRY_COMPARE(app.table().tableView().accessibleDescription().trimmed(),
            u"No pods with the label app=c in namespace default."_s);
        app.cluster.answer(u"get po"_s, podListing);
        field->setFocus();
        press(field, u",!x web-2{return}"_s);
        QTRY_COMPARE(reads().size(), 2);
        QCOMPARE(last(), u"get po --context=b -ndefault -lapp=c,!x"_s);
        QTRY_COMPARE(app.table().arrangedObjects().rowCount(), 1);
        field->setFocus();
        press(field, u"{escape}"_s); // at once: nothing says any more that rows are missing
        QTRY_COMPARE(reads().size(), 3);
        QCOMPARE(last(), u"get po --context=b -ndefault"_s);
        QTRY_COMPARE(app.table().arrangedObjects().rowCount(), 2);
    }

    void podsOwnersAndBack()
    {
        App app;
        app.cluster.answer(u"get po"_s, podListing);
        app.open();
        const QLineEdit *field = app.page().toolBar().filterField();
        app.page().sidebarController().select(u"Deployments"_s);
        QTRY_VERIFY(!app.table().isLoading());
        app.table().tableView().selectRow(0);
        app.cluster.answer(u"get deploy"_s, R"({"matchLabels":{"app":"alpha"}})");
        app.command(u"Show Pods"_s).trigger();
        QTRY_COMPARE(field->text(), u"label:app=alpha"_s);
        QCOMPARE(selected(app), u"Pods:"_s);
        QTRY_COMPARE(app.table().arrangedObjects().rowCount(), 2);
        QVERIFY(app.cluster.tableReads().last().contains(u" -lapp=alpha "_s));
        QTRY_VERIFY(!app.table().isLoading());

        app.table().tableView().selectRow(1);
        app.cluster.answer(u"get deploy"_s, deploymentListing);
        app.cluster.answer(u"get po"_s,
            R"([{"kind":"Node","name":"n"},{"kind":"Deployment","name":"beta","controller":true}])");
        QTest::keyClick(app.frame, Qt::Key_U, Qt::ControlModifier | Qt::ShiftModifier);
        QTRY_COMPARE(selected(app), u"Deployments:beta"_s);
        app.cluster.answer(u"get po"_s, podListing);

        const auto back = [&] { QTest::keyClick(app.frame, Qt::Key_Left, Qt::AltModifier); };
        back();
        QTRY_COMPARE(selected(app), u"Pods:web-2"_s);
        QCOMPARE(field->text(), u"label:app=alpha"_s);
        back();
        QTRY_COMPARE(selected(app), u"Deployments:alpha"_s);
        QTest::mouseClick(app.table().tableView().viewport(), Qt::BackButton);
        QCOMPARE(selected(app), u"Pods:"_s);
        QCOMPARE(field->text(), QString());
        QVERIFY(!app.command(u"Back"_s).isEnabled());
        QTest::mouseClick(app.table().tableView().viewport(), Qt::ForwardButton);
        QTRY_COMPARE(selected(app), u"Deployments:alpha"_s);
        app.page().sidebarController().select(u"Jobs"_s); // what was ahead is forgotten
        QVERIFY(!app.command(u"Forward"_s).isEnabled() && app.command(u"Back"_s).isEnabled());
        back();
        QTRY_COMPARE(selected(app), u"Deployments:alpha"_s);
    }

    void thePanelFollowsItsLinks()
    {
        App app;
        app.cluster.answer(u"get -n"_s,
            "kind: Pod\nmetadata:\n  name: web-1\n  namespace: default\n  ownerReferences:\n"
            "  - {kind: Deployment, name: beta}\n  - {kind: Deployment, name: gone}\n"
            "subjects: [{kind: ServiceAccount, name: <b>far</b>, namespace: other}]\n");
        app.open();
        app.table().tableView().selectRow(0);
        QTest::keyClick(&app.table().tableView(), Qt::Key_Return);
        PreviewPanel &panel = PreviewPanel::shared();
        auto *links = panel.findChild<RelationsLine *>();
        QTRY_VERIFY(links->text().contains(u"href=\"0\">beta</a>"_s));
        QVERIFY(links->text().contains(u"&lt;b&gt;far&lt;/b&gt; (in other)"_s)); // out of reach, so no link
        const auto follow = [&](const QString &name) {
            const QString before = links->text().section(u">%1</a>"_s.arg(name), 0, 0);
            Q_EMIT links->linkActivated(before.section(u'"', -2, -2));
        };
        follow(u"gone"_s);
        const auto labels = panel.findChildren<QLabel *>();
        QTRY_VERIFY(std::any_of(labels.cbegin(), labels.cend(),
            [](const QLabel *label) { return label->text() == u"gone is not in its table"_s; }));
        QCOMPARE(panel.windowTitle(), u"web-1 – Preview"_s);

        app.cluster.answer(u"get -n"_s, "kind: Deployment\nspec: {selector: {matchLabels: {app: beta}}}");
        follow(u"beta"_s);
        QTRY_COMPARE(selected(app), u"Deployments:beta"_s);
        QTRY_COMPARE(panel.windowTitle(), u"beta – Preview"_s);
        QTRY_VERIFY(links->text().contains(u">show all</a>"_s));
        app.cluster.answer(u"get deploy"_s, R"({"matchLabels":{"app":"beta"}})");
        follow(u"show all"_s);
        QTRY_COMPARE(app.page().toolBar().filterField()->text(), u"label:app=beta"_s);
        QCOMPARE(selected(app), u"Pods:"_s);
        panel.close();
    }

    void whatLeadsNowhereIsTold()
    {
        App app;
        app.cluster.answer(u"get po"_s, podListing);
        app.open();
        app.table().tableView().selectRow(0);
        for (const auto &[answer, told] : {std::pair(""_ba, u"the pod web-1 has none."_s),
                 {R"([{"kind":"Boat","name":"b"}])"_ba, u"there is no table for the kind of b (boat)."_s}}) {
            app.cluster.answer(u"get po"_s, answer);
            app.table().showOwner();
            QTRY_VERIFY2(app.console().contains(told), qPrintable(app.console()));
        }
        QCOMPARE(selected(app), u"Pods:web-1"_s);
        QVERIFY(app.command(u"Show Pods"_s).toolTip().startsWith(u"Pods have no pods."_s));
        app.page().sidebarController().select(u"Deployments"_s);
        app.table().tableView().selectRow(0);
        app.cluster.hold(u"get deploy"_s);
        app.cluster.answer(u"get deploy"_s, R"({"matchLabels":{"app":"alpha"}})");
        app.table().showPods();
        app.state().chooseNamespace(u"shop"_s); // what comes then is of another place
        app.cluster.release(u"get deploy"_s);
        QTRY_VERIFY(app.console().contains(u"matchLabels"_s));
        QTRY_VERIFY(!app.table().isLoading());
        QCOMPARE(selected(app), u"Deployments:"_s);
    }

    void selectors_data()
    {
        QTest::addColumn<QByteArray>("selector");
        QTest::addColumn<QString>("nameSpace");
        QTest::addColumn<QString>("filter");
        const auto row = [](const QByteArray &selector, const char *filter, const QString &nameSpace = {}) {
            QTest::newRow(selector.constData()) << selector << nameSpace << QString::fromLatin1(filter);
        };
        row(R"({"app":"cart","tier":"web"})", "label:app=cart,tier=web");
        row(R"({"matchLabels":{"app":"cart"}})", "label:app=cart ns:=shop", u"shop"_s);
        row(R"({"matchLabels":{"a":""},"matchExpressions":[{"key":"b","operator":"In","values":["c","d"]},
            {"key":"e","operator":"NotIn","values":["f"]},{"key":"g","operator":"Exists"},
            {"key":"h","operator":"DoesNotExist"}]})",
            "label:\"a=,b in (c,d),e notin (f),g,!h\"");
        row("", "");
        row("{}", "");
        row("map[app:cart]", "");
    }
    void selectors()
    {
        QFETCH(QByteArray, selector);
        QFETCH(QString, nameSpace);
        QTEST(podFilter(selector, nameSpace).value_or(QString()), "filter");
    }
};

QTEST_MAIN(TestWays)
#include "tst_ways.moc"
