// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop.h"
#include "app/preferences/PreferencesWindowController.h"
#include "core/running/ApplicationRecord.h"
#include "demo/DemoProcess.h"
#include "support/TestFolder.h"
#include "support/TestSupport.h"

#include <QApplication>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

const auto preferredEditor = u"preferredEditor"_s;
const auto editWeb = u"kubectl edit -n default deployments web -o yaml"_s;

} // namespace

/// Edits in a window on the demo cluster, with the real kubectl and a script in the place of the editor.
class TestEditWindow : public QObject
{
    Q_OBJECT
private:
    TestFolder m_folder;
    UserDefaults m_settings{m_folder.path(u"settings.json"_s)};
    RecordingConsole m_console;
    std::unique_ptr<DemoProcess> m_demo;
    std::unique_ptr<Desktop> m_desktop;

    QString read(const QString &name) const { return QString::fromUtf8(m_folder.read(name)); }
    /// Edits the deployment; true once the edit has finished.
    bool edited()
    {
        auto finished = std::make_shared<bool>(false);
        m_desktop->state().startExternalEdit(editWeb.split(u' '), [finished] { *finished = true; });
        return QTest::qWaitFor([finished] { return *finished; }, 30'000);
    }

private Q_SLOTS:
    void init()
    {
        qputenv("PATH", QFile::encodeName(m_folder.path()) + ":/usr/bin:/bin");
        qputenv("KUBE_EDITOR", "vi"); // which kubectl would prefer
        qputenv("TMPDIR", QFile::encodeName(m_folder.path())); // kubectl leaves files behind, as it should
        setUserDefaultsForTesting(&m_settings);
        applicationRecord() = {};
        setKubectlPath(qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"));
        m_demo = std::make_unique<DemoProcess>(
            QStringList(u"--still"_s), qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"));
        QVERIFY(m_demo->isReady());
        m_settings.set(u"defaultKubeConfigPath"_s, m_demo->kubeconfig());
        m_settings.set(preferredEditor, u"Kate"_s);
        m_desktop = std::make_unique<Desktop>();
        setMainConsoleLookup([this] { return &m_console; });
        m_desktop->openWindow();
        m_desktop->state().setConsole(&m_console);
        QTRY_VERIFY(m_desktop->state().namespaceList().enabled);
        m_desktop->state().chooseNamespace(u"default"_s);
        m_console.entries.clear();
    }
    void cleanup()
    {
        m_desktop.reset();
        m_demo.reset();
        setUserDefaultsForTesting(nullptr);
    }

    void outcomes_data()
    {
        QTest::addColumn<QString>("editor");
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<QString>("replicas");
        const auto row = [](const char *name, const QByteArray &script, const QString &outcome,
                             const QString &left = u"3"_s, const QString &editor = u"Kate"_s) {
            QTest::newRow(name) << editor << script << outcome << left;
        };
        // What the editor itself prints is nobody's word on the edit.
        const QByteArray talk = "echo edited; echo 'a warning' >&2; ";
        row("changed", talk + "sed -i 's/^  replicas: .*/  replicas: 7/' \"$3\"",
            u"|Configuration saved.|(end)"_s, u"7"_s);
        row("unchanged", talk, u"||Edit cancelled, no changes made.\n(end)"_s);
        row("broken", talk + "[ -e $0.once ] || echo ' : [' >> \"$3\"; touch $0.once",
            u"-o yaml||error: deployments.apps \"web\" is invalid\nA copy of your changes has been stored to"_s);
        row("not installed", "", u"||The editor gvim is not installed.\n"_s, u"3"_s, u"GVim"_s);
        row("fails", talk + "exit 4", u"||a warning\nerror: there was a problem with the editor"_s);
    }
    void outcomes()
    {
        QFETCH(QString, editor);
        QFETCH(QByteArray, script);
        m_settings.set(preferredEditor, editor);
        m_folder.write(u"kate"_s, "#!/bin/sh\n" + script + '\n');
        // Another program has switched the kubeconfig: the edit is the window's all the same. (The file is
        // locked while the window itself writes into it.)
        QTRY_COMPARE(m_demo->kubectl({u"config"_s, u"use-context"_s, u"demo-lighthouse"_s}).exitCode, 0);
        QVERIFY(edited());
        const QStringList entries = m_console.entries;
        QVERIFY2(entries.size() >= 2 && entries.contains(editWeb + u"||"_s), qPrintable(entries.join(u'\n')));
        QVERIFY(entries.last().startsWith(u"Returning: "_s + editWeb + u'|'));
        QFETCH(QString, outcome);
        QVERIFY2(QString(entries.last() + u"(end)"_s).contains(outcome), qPrintable(entries.last()));
        const QStringList read{u"--context=demo-harbor"_s, u"-ndefault"_s, u"get"_s, u"deploy"_s, u"web"_s,
            u"-ojsonpath={.spec.replicas}"_s};
        QTEST(m_demo->kubectl(read).output, "replicas");
    }

    void endsWithItsWindow_data()
    {
        QTest::addColumn<bool>("quit");
        QTest::newRow("window closed") << false;
        QTest::newRow("program quits") << true;
    }
    void endsWithItsWindow()
    {
        QFETCH(bool, quit);
        m_folder.write(u"kate"_s,
            "#!/bin/sh\ncut -d' ' -f4 /proc/$PPID/stat > $0.kubectl; echo $$ > $0.pid; printf %s \"$3\" > "
            "$0.file\n"
            "while [ ! -e $0.go ]; do echo waiting; sleep 0.05; done; echo '# mine' >> \"$3\"\n");
        for (const auto &left : {u"kate.go"_s, u"kate.file"_s}) {
            m_folder.remove(left);
        }
        const SharedContentViewController &table = m_desktop->table();
        QTRY_VERIFY(!table.tableItems().empty() && !table.isLoading());
        table.tableView().selectRow(0);
        table.tableView().setFocus();
        QVERIFY(QTest::qWaitForWindowActive(m_desktop->frame));
        QTest::keyClick(&table.tableView(), Qt::Key_E, Qt::ControlModifier);
        QTRY_VERIFY(!read(u"kate.file"_s).isEmpty());
        const qint64 kubectl = read(u"kate.kubectl"_s).trimmed().toLongLong();
        const qint64 editor = read(u"kate.pid"_s).trimmed().toLongLong();
        const QString file = read(u"kate.file"_s);
        QVERIFY(isAlive(kubectl) && isAlive(editor));
        if (quit) {
            m_desktop->delegate.applicationWillTerminate();
        } else {
            m_desktop->frame->close();
        }
        QTRY_VERIFY(!isAlive(kubectl));
        if (!quit) {
            QTRY_VERIFY(m_console.entries.last().startsWith(u"Returning: kubectl edit -n default "_s));
            QVERIFY2(m_console.entries.last().endsWith(u"kept, but not applied: "_s + file),
                qPrintable(m_console.entries.last()));
        }
        // What the user still has in the editor is not lost.
        QVERIFY(isAlive(editor));
        m_folder.write(u"kate.go"_s, "");
        QTRY_VERIFY(!isAlive(editor));
        QFile edited(file);
        QVERIFY(edited.open(QIODevice::ReadOnly));
        const QByteArray text = edited.readAll();
        QVERIFY(text.contains("kind: Pod") && text.endsWith("# mine\n"));
    }

    void withoutAnEditor()
    {
        m_settings.remove(preferredEditor);
        QVERIFY(edited());
        const auto box = [this] { return m_desktop->question(); };
        QTRY_VERIFY(box() && box() == QApplication::activeModalWidget());
        QCOMPARE(box().title() + u'|' + box().message() + u'|' + box().buttons().first()->text(),
            u"Editor not set|To edit files, you must first select an editor in Tidewright: Preferences|"
            "Open Preferences"_s);
        QVERIFY(!m_desktop->delegate.preferencesController());
        box().press(u"Open Preferences"_s);
        QTRY_VERIFY(m_desktop->delegate.preferencesController()
            && m_desktop->delegate.preferencesController()->isVisible());
        QCOMPARE(m_console.entries.filter(u"kubectl edit"_s), QStringList());
    }
};

QTEST_MAIN(TestEditWindow)
#include "tst_edit_window.moc"
