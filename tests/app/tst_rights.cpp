// SPDX-License-Identifier: GPL-3.0-or-later
// What the user may not do: read from what kubectl prints of it, and told in a window.
#include "App.h"
#include "app/content/SidebarController.h"
#include "demo/DemoProcess.h"
#include "resources/listing/AccessRules.h"
#include "support/Table.h"

#include <QSlider>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

const QByteArray header = "Resources   Non-Resource URLs   Resource Names   Verbs\n";
/// Reads everything but secrets, and changes one config map. Everybody may ask what he may do.
const QByteArray reader
    = "Resources                               Non-Resource URLs   Resource Names   Verbs\n"
      "selfsubjectreviews.authentication.k8s.io   []              []               [create]\n"
      "pods                                    []                  []               [get list]\n"
      "deployments.apps                        []                  []               [get list]\n"
      "configmaps                              []                  [motd]           [patch]\n"
      "                                        [/version]          []               [get]\n";

QString told(const QAction &action)
{
    return (action.isEnabled() ? u"on: "_s : u"off: "_s) + action.toolTip();
}

} // namespace

class TestRights : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rules_data()
    {
        const Table<QByteArray, Access, bool> table;
        const Access exec{u"create"_s, {}, u"pods"_s, u"exec"_s};
        const Access scale{u"patch"_s, u"apps"_s, u"deployments"_s, u"scale"_s};
        const Access create{u"create"_s, {}, {}};
        const auto row = [&](const QByteArray &name, const QByteArray &line, const Access &access, bool may) {
            table.row(name, QByteArray(header + line), access, may);
        };
        const auto line
            = [](const QByteArray &what, const QByteArray &names, const QByteArray &verbs) -> QByteArray {
            return what.leftJustified(12) + "[]                  " + names.leftJustified(17) + verbs;
        };
        row("everything", line("*.*", "[]", "[*]"), exec, true);
        row("all of one group", line("*", "[]", "[*]"), scale, false);
        row("all of its group", line("*.apps", "[]", "[patch]"), scale, true);
        row("the kind is not its parts", line("pods", "[]", "[*]"), exec, false);
        row("another verb", line("pods/exec", "[]", "[get]"), exec, false);
        row("that part of any kind", line("*.*/scale", "[]", "[get patch]"), scale, true);
        row("one object", line("pods/exec", "[a b]", "[create]"),
            {u"create"_s, {}, u"pods"_s, u"exec"_s, u"c"_s}, false);
        row("one of its objects", line("pods/exec", "[a c]", "[create]"),
            {u"create"_s, {}, u"pods"_s, u"exec"_s, u"c"_s}, true);
        row("some object", line("pods/exec", "[a b]", "[create]"), exec, true);
        row("anything", line("pods", "[]", "[create]"), create, true);
        table.row("asking is no creating", reader, create, false);
    }
    void rules()
    {
        const auto [printed, access, may] = Table<QByteArray, Access, bool>::current();
        const auto rules = AccessRules::read(printed);
        QVERIFY(rules);
        QCOMPARE(rules->mayDo(access), may);
    }

    void whatCannotBeReadIsNotKnown()
    {
        for (const QByteArray &printed : {QByteArray(), header, QByteArray("yes"),
                 QByteArray(header + "pods"), QByteArray(reader).replace("[patch]", "patch")}) {
            QVERIFY2(!AccessRules::read(printed), printed.constData());
        }
    }

    /// What a real client prints is what a server with these rules does.
    void rulesHold_data()
    {
        const Table<QString, QString, Access, QStringList> table;
        for (const char *client : {"TIDEWRIGHT_TEST_KUBECTL", "TIDEWRIGHT_TEST_KUBECTL_OLD"}) {
            const auto row = [&](const QString &denied, const Access &access, const QString &command) {
                table.row(client + QByteArray(" ") + denied.toUtf8(), qEnvironmentVariable(client), denied,
                    access, command.split(u' '));
            };
            row(u"delete pods"_s, {u"delete"_s, {}, u"pods"_s},
                u"delete pod orders-db-0 -n data --wait=false"_s);
            row(u"* secrets"_s, {u"list"_s, {}, u"secrets"_s}, u"get secrets -n data"_s);
            row(u"get pods/log"_s, {u"get"_s, {}, u"pods"_s, u"log"_s},
                u"logs orders-db-0 -c postgres -n data"_s);
            row(u"create pods/exec"_s, {u"create"_s, {}, u"pods"_s, u"exec"_s},
                u"exec orders-db-0 -n data -- true"_s);
            row(u"patch statefulsets/scale, update statefulsets/scale"_s,
                {u"patch"_s, u"apps"_s, u"statefulsets"_s, u"scale"_s},
                u"scale statefulset/orders-db --replicas=2 -n data"_s);
        }
    }
    void rulesHold()
    {
        const auto [client, denied, access, command]
            = Table<QString, QString, Access, QStringList>::current();
        for (const bool isDenied : {false, true}) {
            const DemoProcess demo(
                {u"--still"_s, u"--may-not"_s, isDenied ? denied : u"update nodes"_s}, client);
            const auto listed = demo.kubectl({u"auth"_s, u"can-i"_s, u"--list"_s, u"-ndata"_s});
            QCOMPARE(listed.errors, QString());
            const auto rules = AccessRules::read(listed.output.toUtf8());
            QVERIFY2(rules, qPrintable(listed.output));
            QCOMPARE(rules->mayDo(access), !isDenied);
            const QString errors = demo.kubectl(command).errors;
            QVERIFY2(errors.contains(u"(Forbidden)"_s) == isDenied, qPrintable(errors));
        }
    }

    void commandsTellWhatIsNotAllowed_data()
    {
        const Table<QByteArray, bool, bool> table; // what can-i prints, whether it warns, whether that counts
        table.row("a reader", reader, false, true);
        table.row("perhaps more", reader, true, false);
        table.row("no rules", header, false, false);
    }
    void commandsTellWhatIsNotAllowed()
    {
        const auto [printed, warns, isSure] = Table<QByteArray, bool, bool>::current();
        App app;
        app.cluster.answer(u"rights"_s, printed);
        if (warns) {
            app.cluster.fail(u"rights"_s, "warning: the list may be incomplete");
        }
        app.open();
        app.table().tableView().selectRow(0);
        QTRY_COMPARE(app.cluster.reviews(), QStringList(u"auth can-i --list --context=b -ndefault"_s));
        const auto expect = [&](const QString &title, const QString &reason, const QString &otherwise) {
            QTRY_COMPARE(told(app.command(title)), isSure ? u"off: "_s + reason : otherwise);
        };
        expect(u"Delete…"_s, u"You may not delete pods in default."_s,
            u"on: Delete the selected objects (Del)"_s);
        expect(u"Edit Configuration"_s, u"You may not edit pods in default."_s,
            u"on: Edit the first selected object"_s);
        expect(u"View Logs"_s, u"You may not read the logs of pods in default."_s,
            u"on: Show the logs of what is selected (Ctrl+Shift+L)"_s);
        expect(u"Create from File…"_s, u"You may not create anything in default."_s,
            u"on: Create what YAML files declare (Ctrl+O)"_s);
        QVERIFY(app.command(u"Apply from File…"_s).isEnabled()); // of that config map, perhaps
        app.page().sidebarController().select(u"Deployments"_s);
        QTRY_VERIFY(app.table().findChild<QSlider *>());
        QTRY_COMPARE(app.table().findChild<QSlider *>()->toolTip(),
            isSure ? u"You may not scale deployments in default."_s : u"Scale alpha"_s);
        QCOMPARE(app.cluster.reviews().size(), 1); // for all tables
    }

    void rulesAreThoseOfThePlace()
    {
        App app;
        app.cluster.answer(u"rights"_s, reader);
        app.open();
        app.table().tableView().selectRow(0);
        QAction &remove = app.command(u"Delete…"_s);
        QTRY_VERIFY(!remove.isEnabled());
        QString obstacle; // of a kind that no table has been loaded of
        connect(&app.content(), &PrimaryContentController::obstacleFound, &app.content(),
            [&](const QString &name, const QString &reason) {
                obstacle = name == u"stateful sets" ? reason : obstacle;
            });
        app.state().chooseNamespace(u"shop"_s);
        QTRY_COMPARE(obstacle, u"You may not list stateful sets in shop."_s);
        QTRY_COMPARE(told(remove), u"off: You may not delete pods in shop."_s);
        app.state().chooseNamespace(u"default"_s);
        QCOMPARE(told(remove), u"off: You may not delete pods in default."_s); // known by now
        app.state().chooseNamespace(allNamespaces);
        QTRY_COMPARE(app.table().tableItems().size(), 3U);
        app.table().tableView().selectRow(0);
        QVERIFY(remove.isEnabled());
        QCOMPARE(obstacle, QString());
        QCOMPARE(app.cluster.reviews().size(), 2);
        app.state().chooseNamespace(u"default"_s);
        app.state().reloadContexts();
        QTRY_COMPARE(app.cluster.reviews().size(), 3); // they may be others now
        QTRY_COMPARE(told(remove), u"off: You may not delete pods in default."_s);
    }
};

QTEST_MAIN(TestRights)
#include "tst_rights.moc"
