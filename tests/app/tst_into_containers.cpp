// SPDX-License-Identifier: GPL-3.0-or-later
#include "App.h"
#include "actions/ActionTerminal.h"
#include "external/TerminalQuoting.h"
#include "pods/table/ContainerButton.h"
#include "resources/forwards/PortForwards.h"

#include <QComboBox>
#include <QLineEdit>
#include <QProcess>
#include <QSpinBox>

using namespace tidewright;
using namespace Qt::StringLiterals;

/// Shells and forwards that are started from a window.
class TestIntoContainers : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        // A terminal without a window.
        setActionTerminal([](const QString &line, const QString &, const QString &) {
            QProcess::execute(u"/bin/sh"_s, {u"-c"_s, withoutLiteralEscapes(line)});
        });
    }
    void cleanupTestCase() { setActionTerminal({}); }

    void shells_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<QString>("chosen"); // its container's button
        QTest::addColumn<ContextAccess>("access");
        QTest::addColumn<QString>("shell"); // pod, container and namespace, or why there is none
        const auto row
            = [](const char *name, int at, const QString &chosen, ContextAccess access,
                  const QString &shell) { QTest::newRow(name) << at << chosen << access << shell; };
        row("the only container", 1, {}, ContextAccess::Free, u"db-1 -c app -n default"_s);
        row("the first of two", 0, {}, ContextAccess::Free, u"web-1 -c app -n default"_s);
        row("the chosen one", 1, u"side"_s, ContextAccess::Free, u"web-1 -c side -n default"_s);
        row("protected", 1, u"side"_s, ContextAccess::Protected, u"web-1 -c side -n default"_s);
        row("read-only", 1, {}, ContextAccess::ReadOnly,
            u"No shell was opened: The context b is read-only (Preferences: Contexts)."_s);
    }
    void shells()
    {
        QFETCH(int, row);
        QFETCH(QString, chosen);
        QFETCH(ContextAccess, access);
        QFETCH(QString, shell);
        App app;
        app.open();
        ContextPolicies::shared().set({app.cluster.kubeConfig(), u"b"_s}, {access, ContextColour::None});
        app.pods().tableView().selectRow(row);
        for (ContainerButton *button : app.pods().containerButtons()) {
            button->setChecked(button->container() == chosen);
        }
        app.page().commandStateChanged();
        QAction &command = app.command(u"Open Shell"_s);
        QCOMPARE(command.isEnabled(), access != ContextAccess::ReadOnly);
        app.pods().openShell();
        if (access == ContextAccess::ReadOnly) {
            QTRY_VERIFY(app.console().contains(shell));
            QCOMPARE(app.cluster.tableReads().filter(u"exec"_s), QStringList());
            return;
        }
        if (access == ContextAccess::Protected) {
            QCOMPARE(app.question().title(), u"Confirm Shell"_s);
            QTest::keyClicks(app.question()->findChild<QLineEdit *>(), u"b"_s);
            app.answer(u"Open Shell"_s);
        }
        QTRY_COMPARE(app.cluster.tableReads().filter(u"exec"_s),
            QStringList(
                u"exec -it %1 --context b -- sh -c command -v bash >/dev/null && exec bash || exec sh"_s.arg(
                    shell)));
    }

    void forwards_data()
    {
        QTest::addColumn<QString>("port");
        QTest::addColumn<int>("local");
        QTest::addColumn<QString>("outcome"); // the last argument, or what the console says
        QTest::newRow("declared") << QString() << 0 << u":8080"_s;
        QTest::newRow("typed") << u"9090"_s << 4711 << u"4711:9090"_s;
        QTest::newRow("no port") << u"99999"_s << 0 << u"No port was forwarded: \"99999\" is no port."_s;
    }
    void forwards()
    {
        QFETCH(QString, port);
        QFETCH(int, local);
        QFETCH(QString, outcome);
        App app;
        app.open();
        app.cluster.answer(u"get --context=b"_s, "8080\thttp\tTCP\n");
        app.content().selectSidebarItem(u"Deployments"_s);
        QTRY_VERIFY(!app.table().isLoading());
        app.table().tableView().selectRow(0);
        app.command(u"Forward Port…"_s).trigger();
        QTRY_VERIFY(app.question());
        auto *ports = app.question()->findChild<QComboBox *>();
        QCOMPARE(ports->currentText(), u"8080 http"_s);
        if (!port.isEmpty()) {
            ports->setEditText(port);
        }
        app.question()->findChild<QSpinBox *>()->setValue(local);
        app.answer(u"Forward Port"_s);
        if (!outcome.contains(u':') || outcome.startsWith(u"No"_s)) {
            QTRY_VERIFY(app.console().contains(outcome));
            QCOMPARE(PortForwards::shared().rowCount(), 0);
            return;
        }
        const QString line = u"port-forward --context=b -ndefault deployment/alpha "_s + outcome;
        QTRY_COMPARE(app.cluster.tableReads().filter(u"port-forward"_s), QStringList(line));
        QTRY_VERIFY(app.console().contains(line));
        QCOMPARE(PortForwards::shared().rowCount(), 1);
    }
};

QTEST_MAIN(TestIntoContainers)
#include "tst_into_containers.moc"
