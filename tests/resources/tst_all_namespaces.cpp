// SPDX-License-Identifier: GPL-3.0-or-later
// Two objects of one name in two namespaces: every command hits the one that was chosen.
#include "AllKinds.h"
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "platform/settings/UserDefaults.h"
#include "resources/kinds/ServedKind.h"
#include "resources/preview/PreviewFiles.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/SharedContentViewController.h"
#include "support/Patience.h"
#include "support/StubWindow.h"

#include <QApplication>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QTest>

#include <map>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

/// One that is none of the house, with the columns of the server.
ResourceKind vesselKind()
{
    return printedKind({.plural = u"vessels"_s, .group = u"harbor.example"_s, .kind = u"Vessel"_s},
        {u"NAME"_s, u"BERTH"_s, u"LENGTH"_s, u"STATE"_s, u"FLAG"_s, u"AGE"_s});
}

const std::vector<MakeKind> &kinds()
{
    static const std::vector<MakeKind> all = [] {
        std::vector<MakeKind> some(std::begin(allKinds), std::end(allKinds));
        some.push_back(vesselKind);
        return some;
    }();
    return all;
}

const auto here = u"default"_s;
const auto elsewhere = u"kube-system"_s;

struct Window : StubWindow
{
    void startExternalEdit(const QStringList &arguments, std::function<void()>) override { edit = arguments; }

    QStringList edit;
};

void click(const QString &title)
{
    QTRY_VERIFY(QApplication::activeModalWidget());
    for (QPushButton *button : QApplication::activeModalWidget()->findChildren<QPushButton *>()) {
        if (button->text() == title) {
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    QFAIL("no such button");
}

} // namespace

class TestAllNamespaces : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        m_demo = std::make_unique<DemoProcess>(QStringList{u"--still"_s}, kubectl(false));
        QVERIFY(m_demo->isReady());
        QVERIFY(m_cache.isValid());
        setCacheDirectory(m_cache.path());
        setUserDefaultsForTesting(&m_settings); // those of whoever runs this may protect a context
    }
    void cleanupTestCase()
    {
        m_demo.reset();
        setUserDefaultsForTesting(nullptr);
    }

    void theRightObject_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<bool>("everywhere");
        QTest::addColumn<bool>("live");
        QTest::addColumn<bool>("old");
        // Where memory is watched, the same code for each kind, some kinds will do.
        for (int number = 0; number < int(kinds().size()); number += sanitized ? 4 : 1) {
            const QString name = kinds()[std::size_t(number)]().tableName;
            const auto row = [&](const char *what, bool everywhere, bool live, bool old) {
                QTest::addRow("%s, %s", qPrintable(name), what) << number << everywhere << live << old;
            };
            row("one namespace, live", false, true, false);
            row("one namespace, listed, 1.20", false, false, true);
            row("all namespaces, live, 1.20", true, true, true);
            row("all namespaces, listed", true, false, false);
        }
    }
    void theRightObject()
    {
        QFETCH(int, number);
        QFETCH(bool, everywhere);
        QFETCH(bool, live);
        QFETCH(bool, old);
        const ResourceKind kind = kinds()[std::size_t(number)]();
        const QString name = u"twins%1%2%3.example.org"_s.arg(number).arg(everywhere).arg(live);
        plant(kind, name);
        Window window;
        open(window, everywhere, live, old);
        SharedContentViewController table(kinds()[std::size_t(number)](), window);
        table.show();
        table.load({});
        const QString place = kind.namespaced && everywhere ? elsewhere : QString();
        int row = -1;
        const auto find = [&] {
            for (int i = 0; i < table.arrangedObjects().rowCount() && row < 0; ++i) {
                const Row &item = table.arrangedObjects().arrangedRow(i);
                row = item->name == name && item->nameSpace == place ? i : -1;
            }
            return row >= 0;
        };
        QTRY_VERIFY(find());
        const int column = kind.namespaced ? table.kind().indexOf(QLatin1String("namespace")) : -1;
        QCOMPARE(column >= 0 && !table.tableView().isColumnHidden(column), !place.isEmpty());
        table.tableView().selectRow(row);

        const ObjectName chosen = table.chosenObjects().first();
        table.showQuickLookPanel();
        const QString path = PreviewFiles::pathFor(chosen.nameSpace, name);
        QTRY_VERIFY(QFile::exists(path));
        QFile preview(path);
        QVERIFY(preview.open(QIODevice::ReadOnly));
        const QByteArray yaml = preview.readAll();
        QVERIFY2(yaml.contains(QByteArray("mark: " + markOf(kind, elsewhere))), yaml.constData());
        QTest::keyClick(QApplication::activeWindow(), Qt::Key_Escape);

        table.editConfiguration();
        QCOMPARE(edited(window.edit), markOf(kind, elsewhere));

        table.deleteRows();
        click(u"Delete"_s);
        QTRY_VERIFY2(!exists(kind, elsewhere, name), qPrintable(window.recorded.entries.join(u'\n')));
        QVERIFY(!kind.namespaced || exists(kind, here, name));
        QTRY_VERIFY(!window.recorded.entries.isEmpty()); // that it has been told
    }

    void whatIsChosenInSeveralNamespaces()
    {
        const ResourceKind kind = configMapKind();
        plant(kind, u"several"_s);
        Window window;
        open(window, true, false, false);
        SharedContentViewController table(configMapKind(), window);
        table.show();
        table.load({});
        QTRY_VERIFY(!table.tableItems().empty() && !table.isLoading());
        table.setFilter(u"several"_s);
        QCOMPARE(table.arrangedObjects().rowCount(), 2);
        table.setFilter(elsewhere); // the namespace counts too
        QVERIFY(table.arrangedObjects().rowCount() > 0);
        table.setFilter(u"several"_s);
        table.tableView().selectAll();
        table.deleteRows();
        QTRY_VERIFY(QApplication::activeModalWidget());
        QString said;
        for (const QLabel *label : QApplication::activeModalWidget()->findChildren<QLabel *>()) {
            said += label->text() + u'\n';
        }
        for (const QString &nameSpace : {here, elsewhere}) {
            QVERIFY2(said.contains(u"Namespace %1: several"_s.arg(nameSpace)), qPrintable(said));
        }
        click(u"Delete"_s);
        QTRY_COMPARE(window.recorded.entries.filter(u"2 of 2 command lines were run, 0 failed"_s).size(), 1);
        QCOMPARE(window.recorded.entries.filter(u"kubectl delete %1 -n"_s.arg(kind.resourceName)).size(), 2);
        QVERIFY(!exists(kind, here, u"several"_s) && !exists(kind, elsewhere, u"several"_s));
        // A window that goes back to one namespace says so no longer, and knows where its rows are.
        window.nameSpace = here;
        table.setFilter({});
        table.clearAndReload({});
        QVERIFY(table.tableView().isColumnHidden(1));
        QTRY_VERIFY(table.arrangedObjects().rowCount() > 0);
        QCOMPARE(table.objectAt(0).nameSpace, here);
    }

private:
    static QString kubectl(bool old)
    {
        return qEnvironmentVariable(old ? "TIDEWRIGHT_TEST_KUBECTL_OLD" : "TIDEWRIGHT_TEST_KUBECTL");
    }

    void open(Window &window, bool everywhere, bool live, bool old) const
    {
        setKubectlPath(kubectl(old));
        window.facade.configPath = m_demo->kubeconfig();
        window.context = u"demo-harbor"_s;
        window.nameSpace = everywhere ? QString(allNamespaces) : elsewhere;
        window.live = live;
        const QString config = m_demo->kubectl({u"config"_s, u"view"_s, u"-ojson"_s}).output;
        QJsonObject contents = QJsonDocument::fromJson(config.toUtf8()).object();
        QJsonArray contexts;
        for (QJsonValue entry : contents[u"contexts"_s].toArray()) {
            QJsonObject named = entry.toObject();
            QJsonObject context = named[u"context"_s].toObject();
            context[u"namespace"_s] = everywhere ? here : elsewhere;
            named[u"context"_s] = context;
            contexts.append(named);
        }
        contents[u"contexts"_s] = contexts;
        window.facade.adopt(
            KubeConfigContents::parse(QJsonDocument(contents).toJson()).value(), window.context);
    }

    static QByteArray markOf(const ResourceKind &kind, const QString &nameSpace)
    {
        return (kind.namespaced ? nameSpace : here).toUtf8();
    }

    /// One there is, to be copied; a kind that has none is a fault of the demo cluster.
    const QJsonObject &example(const ResourceKind &kind)
    {
        QJsonObject &object = m_examples[kind.listWord];
        if (object.isEmpty()) {
            const QByteArray list
                = m_demo->kubectl({u"get"_s, kind.listWord, u"-A"_s, u"-ojson"_s}).output.toUtf8();
            object = QJsonDocument::fromJson(list)[u"items"_s][0].toObject();
            object.remove(u"status"_s);
            QJsonObject spec = object.value(u"spec"_s).toObject();
            spec.remove(u"clusterIP"_s);
            spec.remove(u"clusterIPs"_s);
            if (!spec.isEmpty()) {
                object[u"spec"_s] = spec;
            }
        }
        return object;
    }

    /// Two of a name, each with the label "mark" that tells its namespace.
    void plant(const ResourceKind &kind, const QString &name)
    {
        QJsonArray twins;
        for (const QString &nameSpace : {here, elsewhere}) {
            if (!kind.namespaced && nameSpace != here) {
                break;
            }
            QJsonObject object = example(kind);
            QJsonObject metadata{{u"name"_s, name}, {u"labels"_s, QJsonObject{{u"mark"_s, nameSpace}}}};
            if (kind.namespaced) {
                metadata[u"namespace"_s] = nameSpace;
            }
            object[u"metadata"_s] = metadata;
            if (object.contains(u"involvedObject"_s)) {
                QJsonObject involved = object.value(u"involvedObject"_s).toObject();
                involved[u"namespace"_s] = nameSpace;
                object[u"involvedObject"_s] = involved;
            }
            if (kind.listWord == customResourceDefinitionKind().listWord) {
                nameDefinition(object, name);
            }
            twins.append(object);
        }
        const QJsonObject list{{u"apiVersion"_s, u"v1"_s}, {u"kind"_s, u"List"_s}, {u"items"_s, twins}};
        const Outcome made = m_demo->kubectl(
            {u"create"_s, u"-f"_s, m_demo->writeFile(u"twins.json"_s, QJsonDocument(list).toJson())});
        QVERIFY2(made.exitCode == 0, qPrintable(made.errors));
    }

    /// A definition is called by what it defines.
    static void nameDefinition(QJsonObject &object, const QString &name)
    {
        QJsonObject spec = object.value(u"spec"_s).toObject();
        const QString plural = name.section(u'.', 0, 0);
        spec[u"group"_s] = name.section(u'.', 1);
        spec[u"names"_s]
            = QJsonObject{{u"plural"_s, plural}, {u"singular"_s, plural}, {u"kind"_s, u"Twin"_s}};
        object[u"spec"_s] = spec;
    }

    /// Runs an edit as the window would, and says which object it opened.
    QByteArray edited(const QStringList &arguments) const
    {
        const QString seen = m_demo->writeFile(u"seen"_s, "");
        const Outcome outcome
            = m_demo->kubectl(arguments.sliced(1), 20000, u"sh -c 'grep mark: \"$0\" >%1'"_s.arg(seen));
        QFile file(seen);
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().replace("mark: ", "")
                                              : outcome.errors.toUtf8();
    }

    bool exists(const ResourceKind &kind, const QString &nameSpace, const QString &name) const
    {
        return m_demo->kubectl({u"get"_s, kind.resourceName, u"-n"_s, nameSpace, name}).exitCode == 0;
    }

    QTemporaryDir m_cache;
    std::map<QString, QJsonObject> m_examples; ///< by the word that lists them
    UserDefaults m_settings{m_cache.filePath(u"settings.json"_s)};
    std::unique_ptr<DemoProcess> m_demo;
};

QTEST_MAIN(TestAllNamespaces)
#include "tst_all_namespaces.moc"
