// SPDX-License-Identifier: GPL-3.0-or-later
#include "Desktop.h"
#include "app/content/DestinationView.h"
#include "app/content/SidebarController.h"
#include "app/toolbar/ClusterToolBar.h"
#include "core/running/ApplicationRecord.h"
#include "platform/desktop/Notifications.h"
#include "pods/table/ContainerButton.h"
#include "pods/table/ContainerCopy.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/controllers/CronJobController.h"
#include "resources/controllers/ReplicaCell.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/widgets/ContextBand.h"
#include "support/TestFolder.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QProcess>
#include <QSocketNotifier>
#include <QToolButton>
#include <QToolTip>
#include <QWindow>

#include <iostream>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

// Two clusters that nobody can reach: what matters is where a command would have gone.
constexpr auto kubeConfigText = R"(apiVersion: v1
kind: Config
current-context: alpha
clusters:
- {name: alpha, cluster: {server: "https://alpha.invalid"}}
- {name: beta, cluster: {server: "https://beta.invalid"}}
contexts:
- {name: alpha, context: {cluster: alpha, user: me, namespace: one}}
- {name: beta, context: {cluster: beta, user: me, namespace: one}}
users:
- {name: me, user: {token: t}}
)";

const auto secondProcess = u"--second-process"_s;

bool within(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, 20'000);
}

/// What windows run on, on disk: the recorder in the place of kubectl, a kubeconfig, actions, an editor and a
/// terminal. One for all rows.
struct Machine : TestFolder
{
    Machine()
    {
        for (const char *variable : {"XDG_DATA_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME", "TMPDIR"}) {
            qputenv(variable, QFile::encodeName(path()));
        }
        qputenv("PATH", QFile::encodeName(path()) + ":/usr/bin:/bin");
        qputenv("SHELL", "/bin/true"); // what a terminal leaves open
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
        QFile::link(QStringLiteral(RECORDING_KUBECTL), path(u"kubectl"_s));
        QFile::link(qEnvironmentVariable("TIDEWRIGHT_TEST_KUBECTL"), path(u"real"_s));
        setKubectlPath(path(u"kubectl"_s));
        write(u"kate"_s, "#!/bin/sh\nfor file; do :; done\necho edited >> \"$file\"\n");
        write(u"xdg-terminal-exec"_s, "#!/bin/sh\nexec \"$@\"\n");
        for (const QString &title : {u"background"_s, u"terminal"_s, u"reading"_s}) {
            write(u"Tidewright/Actions/%1/main.sh"_s.arg(title),
                "#!/bin/sh\n\"$KUBECTL\" delete po by-" + title.toUtf8() + '\n');
            write(u"Tidewright/Actions/%1/config.json"_s.arg(title),
                R"({"scope":"namespace","open_in_terminal":)"
                    + QByteArray(title == u"terminal" ? "true" : "false") + R"(,"reads_only":)"
                    + QByteArray(title == u"reading" ? "true}" : "false}"));
        }
        write(u"Tidewright/Actions/python/config.json"_s, R"({"scope":"namespace","is_smart_action":true})");
        write(u"Tidewright/Actions/python/main.py"_s,
            "import tidewright_actions as tw\nclass Action(tw.Action):\n"
            "    def run(self): self.kubectl('delete', 'po', 'by-python')\n");
    }

    QString kubeConfig() const { return path(u"kubeconfig"_s); }
};

/// The machine and the user's settings for the windows there.
struct OnMachine
{
    const Machine &machine;
    UserDefaults settings{machine.path(u"settings.json"_s)};
};

/// One window that shows the context alpha and its namespace "three", and perhaps another.
struct Windows : OnMachine, Desktop
{
    explicit Windows(const Machine &on)
        : OnMachine{on}
    {
        setUserDefaultsForTesting(&settings);
        applicationRecord() = {};
        settings.set(u"defaultKubeConfigPath"_s, machine.kubeConfig());
        settings.set(u"preferredEditor"_s, u"Kate"_s);
        settings.set(u"preferredTerminal"_s, u"Terminal"_s);
        settings.set(
            u"lastNamespaces"_s, UserDefaults::Dictionary{{u"alpha"_s, u"three"_s}, {u"beta"_s, u"three"_s}});
        setNotificationFallback(
            [this](const QString &title, const QString &text) { notified += title + u'\n' + text + u'\n'; });
        first = &open();
        frame = delegate.mainWindow();
    }
    ~Windows()
    {
        delegate.applicationWillTerminate();
        setUserDefaultsForTesting(nullptr);
    }

    MainWindowController &open()
    {
        delegate.newDocument();
        MainWindowController &opened = *delegate.mainWindow()->currentPage();
        [&] { QTRY_VERIFY(isLoaded(opened)); }();
        return opened;
    }
    static bool isLoaded(const MainWindowController &window)
    {
        const auto *table = window.primaryContentController().shownTable();
        return window.state().namespaceList().enabled && table->rowsAsOf().isValid() && !table->isListing()
            && !table->tableItems().empty();
    }
    /// Shows a kind of objects with its only row selected.
    void select(const QString &kind) const
    {
        page().sidebarController().select(kind);
        QTRY_VERIFY(isLoaded(page()));
        table().tableView().selectRow(0);
    }
    void runAction(const QString &title)
    {
        const auto &items = delegate.actions().customToolbarItems();
        QTRY_VERIFY(items.contains(title));
        page().runAction(items.value(title));
    }
    void drop(const QString &file) const
    {
        QMimeData dropped;
        dropped.setUrls({QUrl::fromLocalFile(file)});
        const auto *view = page().findChild<DestinationView *>();
        const QPoint place = view->mapTo(frame, view->rect().center());
        QDragEnterEvent enter(place, Qt::CopyAction, &dropped, Qt::LeftButton, {});
        QCoreApplication::sendEvent(frame->windowHandle(), &enter);
        QDropEvent drop(place, Qt::CopyAction, &dropped, Qt::LeftButton, {});
        QCoreApplication::sendEvent(frame->windowHandle(), &drop);
    }
    /// Where the window says that it is, as the recorder writes it.
    QString shown() const
    {
        const QString context = state().currentContext();
        return u"%1 %2 https://%1.invalid"_s.arg(context, state().currentNamespace());
    }
    /// All that the user is told, in whatever window.
    QString told() const
    {
        QString text = notified;
        for (const QWidget *window : QApplication::topLevelWidgets()) {
            for (const auto *console : window->findChildren<ConsoleTextView *>()) {
                text += console->toPlainText() + u'\n';
            }
        }
        return text;
    }
    bool isSettled() const
    {
        auto settled = std::make_shared<bool>(!first);
        if (first) {
            state().whenSettled([settled](const QString &) { *settled = true; });
        }
        return within([&] { return *settled; });
    }

    QPointer<MainWindowController> first; ///< the page that all is done in, until it is closed
    std::optional<ChangePlace> asked;
    QString notified;
};

using Step = std::function<void(Windows &)>;

Step then(Step first, Step second)
{
    return [=](Windows &w) {
        first(w);
        second(w);
    };
}

/// What a user does: `ask` up to the last question, `act` behind it.
struct Operation
{
    enum Means { Asks, Starts, Reads, Shows }; // the last in a window of its own

    const char *name;
    Means means; ///< whether it asks anything where changes are free
    QString run; ///< how the arguments of its run begin
    QString notDone; ///< how a refusal begins
    Step ask;
    Step act;
    QString command = {}; ///< the one of the menu bar; empty without one
    Step begin = {}; ///< up to the question, or to the start, by that command
    Step whereReadOnly = {}; ///< does it all the same, past a command that is disabled, and sees the reason

    bool onlyReads() const { return means == Reads || means == Shows; }
};

Step choose(const QString &command, const QString &kind)
{
    return [=](Windows &w) {
        w.select(kind);
        QVERIFY(w.command(command).isEnabled());
        w.command(command).trigger();
    };
}

void chooseFile(Windows &w)
{
    auto *dialog = w.frame->findChild<QFileDialog *>();
    QVERIFY(dialog);
    w.machine.write(u"object.yaml"_s, "{}");
    dialog->setDirectory(w.machine.path());
    dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(u"object.yaml"_s);
    QMetaObject::invokeMethod(dialog, "accept");
}

void chooseContainer(Windows &w)
{
    w.select(u"Pods"_s);
    QTRY_VERIFY(!w.pods().containerButtons().empty());
    if (w.pods().selectedContainerPairs().empty()) {
        QTest::mouseClick(w.pods().containerButtons().front(), Qt::LeftButton);
    }
}

void viewOnly(Windows &w)
{
    choose(u"View Configuration"_s, u"Pods"_s)(w);
    QTRY_VERIFY(PreviewPanel::shared().isVisible());
    QTRY_VERIFY(w.machine.read(u"runs"_s).startsWith("get -n"));
    PreviewPanel::shared().close(); // which would end the run
    w.machine.remove(u"runs"_s);
    w.state().startExternalEdit({u"kubectl"_s, u"edit"_s, u"po"_s, u"x"_s}, [] {});
    QTRY_VERIFY(w.told().contains(u"alpha is read-only"_s));
}

Operation typed(const char *name, Operation::Means means, const QString &line, const QString &run)
{
    return {name, means, run, u"was not run"_s, {}, [line](Windows &windows) {
                windows.type(QString(line).replace(u"KUBECTL"_s, windows.machine.path(u"kubectl"_s)));
            }};
}

Operation action(const QString &title, Operation::Means means = Operation::Starts)
{
    return {qstrdup(qPrintable(title + u" action"_s)), means, u"delete po by-"_s + title,
        u"\"%1\" was not run"_s.arg(title), {}, [title](Windows &windows) { windows.runAction(title); }};
}

std::vector<Operation> operations()
{
    const auto onRow = [](const QString &kind) { return [kind](Windows &w) { w.select(kind); }; };
    const auto answer = [](const QString &title) { return [title](Windows &w) { w.answer(title); }; };
    const auto file = [](const Windows &w) { return w.machine.path(u"object.yaml"_s); };
    const auto createFile = [](Windows &w) {
        w.command(u"Create from File…"_s).trigger();
        chooseFile(w);
    };
    const auto seesFixedScale = [](Windows &w) {
        w.select(u"Deployments"_s);
        const auto *field = w.table().findChild<ReplicaCell *>()->field();
        QVERIFY(!field->isEnabled() && field->toolTip().contains(u"alpha is read-only"));
    };
    return {
        {"delete", Operation::Asks, u"delete po web-1"_s, u"Nothing was deleted"_s,
            then(onRow(u"Pods"_s), [](Windows &w) { w.table().deleteRows(); }), answer(u"Delete"_s),
            u"Delete…"_s, choose(u"Delete…"_s, u"Pods"_s)},
        {"scale", Operation::Asks, u"scale "_s, u"Nothing was scaled"_s,
            [](Windows &w) {
                w.select(u"Deployments"_s);
                QTRY_VERIFY(w.table().findChild<ReplicaCell *>());
                auto *cell = w.table().findChild<ReplicaCell *>();
                cell->startTyping();
                QTest::keyClicks(cell->field(), u"7"_s);
                QTest::keyClick(cell->field(), Qt::Key_Return);
            },
            answer(u"Scale Deployment"_s), {}, {}, seesFixedScale},
        {"run a cron job", Operation::Starts, u"create job "_s, u"Nothing was run"_s, onRow(u"Cron Jobs"_s),
            [](Windows &w) { qobject_cast<CronJobController *>(&w.table())->runCronJobNow(); },
            u"Run Cron Job Now"_s, choose(u"Run Cron Job Now"_s, u"Cron Jobs"_s)},
        {"create from files", Operation::Starts, u"create --context"_s, u"Nothing was created"_s,
            [](Windows &w) { w.asked.emplace(w.state()); },
            [=](Windows &w) { w.content().createFrom({file(w)}, *w.asked); }, u"Create from File…"_s,
            createFile},
        {"drop", Operation::Asks, u"create --context"_s, u"Nothing was created"_s,
            [=](Windows &w) { w.drop(file(w)); }, answer(u"Create"_s), {}, {},
            [=](Windows &w) {
                w.drop(file(w));
                QTRY_VERIFY(QToolTip::text().contains(u"alpha is read-only"));
            }},
        {"copy into a container", Operation::Starts, u"cp "_s, u"Nothing was copied"_s, onRow(u"Pods"_s),
            [=](Windows &w) {
                copyIntoContainer(
                    w.table(), {u"web-1"_s, u"app"_s, w.state().currentNamespace()}, {file(w)}, u"/tmp/"_s);
            },
            u"Copy File…"_s, then(chooseContainer, then(choose(u"Copy File…"_s, u"Pods"_s), chooseFile))},
        {"edit", Operation::Starts, u"edit "_s, u"Nothing was edited"_s, onRow(u"Pods"_s),
            [](Windows &w) { w.table().editConfiguration(); }, u"Edit Configuration"_s,
            choose(u"Edit Configuration"_s, u"Pods"_s), viewOnly},
        typed("typed kubectl", Operation::Starts, u"kubectl delete po typed"_s, u"delete po typed"_s),
        typed("typed program", Operation::Starts, u"env KUBECTL delete po by-env"_s, u"delete po by-env"_s),
        action(u"background"_s),
        action(u"terminal"_s),
        action(u"python"_s),
        typed("typed reading", Operation::Reads, u"kubectl describe po x"_s, u"describe po x"_s),
        action(u"reading"_s, Operation::Reads),
        {"logs", Operation::Shows, u"logs "_s, u"No logs"_s, onRow(u"Pods"_s),
            [](Windows &w) { w.table().viewLogs(); }},
        {"preview", Operation::Shows, u"get -n "_s, u"No preview"_s, onRow(u"Pods"_s),
            [](Windows &w) { w.table().showQuickLookPanel(); }},
    };
}

enum class Outcome { Runs, Refused, Either };

/// What happens before the user asks, between question and answer, and right after the answer.
struct Disturbance
{
    const char *name;
    Outcome outcome;
    Step before;
    Step between;
    Step after;
};

void chooseNamespaceTwo(Windows &w)
{
    w.state().chooseNamespace(u"two"_s);
}

void chooseBeta(Windows &w)
{
    w.state().chooseContext(u"beta"_s);
}

Step hold(const QString &kind)
{
    return [kind](Windows &w) { w.machine.write(u"hold-"_s + kind, {}); };
}

Step release(const QString &kind)
{
    return [kind](Windows &w) { w.machine.remove(u"hold-"_s + kind); };
}

Step killed(const QString &kind, Step choose, const QString &complaint)
{
    return [=](Windows &w) {
        w.machine.write(u"kill-"_s + kind, {});
        choose(w);
        QTRY_VERIFY(w.told().contains(complaint));
    };
}

/// Another program edits the kubeconfig.
Step outside(const QString &before, const QString &after)
{
    return [=](Windows &w) {
        QString text = QString::fromUtf8(w.machine.read(u"kubeconfig"_s));
        QVERIFY(text.contains(before));
        w.machine.write(u"kubeconfig"_s, text.replace(before, after).toUtf8());
    };
}

/// The run has begun, and kubectl has not read its kubeconfig yet.
Step whileSlow(Step meanwhile)
{
    return [=](Windows &w) {
        QTRY_VERIFY(w.machine.has(u"held-run"_s));
        meanwhile(w);
        release(u"run"_s)(w);
    };
}

/// The second process: opens a window on the same kubeconfig for each line that it reads, and chooses beta in
/// it.
int actAsSecondProcess(const QString &folder)
{
    UserDefaults settings(folder + u"/second.json"_s);
    setUserDefaultsForTesting(&settings);
    setKubectlPath(folder + u"/kubectl"_s);
    settings.set(u"defaultKubeConfigPath"_s, QString(folder + u"/kubeconfig"_s));
    AppDelegate delegate;
    QSocketNotifier lines(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&lines, &QSocketNotifier::activated, &delegate, [&] {
        std::string line;
        if (!std::getline(std::cin, line)) {
            QCoreApplication::quit();
            return;
        }
        delete delegate.mainWindow();
        delegate.newDocument();
        KubeSplitViewController &state = delegate.mainWindow()->currentPage()->state();
        QObject::connect(&state, &KubeSplitViewController::clusterSettingsChanged, &state,
            [&state] { state.chooseContext(u"beta"_s); });
    });
    const int status = QApplication::exec();
    delegate.applicationWillTerminate();
    setUserDefaultsForTesting(nullptr);
    return status;
}

void chooseBetaInSecondProcess(Windows &w)
{
    static QProcess second;
    if (second.state() == QProcess::NotRunning) {
        second.start(QCoreApplication::applicationFilePath(), {secondProcess, w.machine.path()});
    }
    second.write("\n");
    QTRY_VERIFY(w.machine.read(u"kubeconfig"_s).contains("current-context: beta"));
}

std::vector<Disturbance> disturbances()
{
    const Step elsewhere = then(outside(u"current-context: alpha"_s, u"current-context: beta"_s),
        outside(u"namespace: one"_s, u"namespace: two"_s));
    const Step otherWindow = [](Windows &w) {
        KubeSplitViewController &other = w.open().state();
        other.chooseContext(u"beta"_s);
        QTRY_VERIFY(w.machine.read(u"kubeconfig"_s).contains("current-context: beta"));
    };
    return {
        {"undisturbed", Outcome::Runs, {}, {}, {}},
        {"two windows", Outcome::Runs, otherWindow, {}, {}},
        {"context switched", Outcome::Either, {}, {}, chooseBeta},
        {"context being switched", Outcome::Refused, {}, then(hold(u"use-context"_s), chooseBeta),
            release(u"use-context"_s)},
        {"context switch killed", Outcome::Refused, {},
            killed(u"use-context"_s, chooseBeta, u"Context beta could not be loaded"_s), {}},
        {"namespace switched", Outcome::Either, {}, {}, chooseNamespaceTwo},
        {"namespace being switched", Outcome::Runs, then(hold(u"set-context"_s), chooseNamespaceTwo), {},
            release(u"set-context"_s)},
        {"namespace switch killed", Outcome::Refused,
            killed(u"set-context"_s, chooseNamespaceTwo, u"Namespace two could not be loaded"_s), {}, {}},
        {"kubeconfig switched by others", Outcome::Runs, {}, elsewhere, {}},
        {"slow, others switch", Outcome::Runs, hold(u"run"_s), {}, whileSlow(elsewhere)},
        {"slow, the window switches", Outcome::Runs, hold(u"run"_s), {}, whileSlow(chooseBeta)},
        {"kubeconfig cannot be written", Outcome::Runs,
            [](Windows &w) {
                QVERIFY(QDir().mkdir(w.machine.path(u"kubeconfig.lock"_s)));
                chooseNamespaceTwo(w);
                QTRY_VERIFY(w.told().contains(u"your own kubeconfig was left as it was"_s));
            },
            {}, {}},
        {"context removed", Outcome::Refused, {},
            outside(u"- {name: alpha, context"_s, u"- {name: omega, context"_s), {}},
        {"context leads elsewhere", Outcome::Refused, {},
            outside(u"https://alpha."_s, u"https://elsewhere."_s), {}},
        {"window closed", Outcome::Either, [](Windows &w) { w.open(); }, {},
            [](Windows &w) { w.frame->close(); }},
        {"second process", Outcome::Runs, {}, chooseBetaInSecondProcess, {}},
    };
}

void step(const Step &what, Windows &windows)
{
    if (what) {
        what(windows);
    }
}

/// The command is disabled and says why; what is done past it is refused for the same reason.
void isRefused(Windows &w, const Operation &operation)
{
    const bool isEdit = operation.command.startsWith(u"Edit");
    if (!operation.command.isEmpty()) {
        const QAction &command = w.command(QString(operation.command).replace(u"Edit"_s, u"View"_s));
        QVERIFY(command.toolTip().contains(u"alpha is read-only"));
        QVERIFY(isEdit || !command.isEnabled());
    }
    if (operation.whereReadOnly) {
        operation.whereReadOnly(w);
        return;
    }
    step(operation.ask, w);
    step(operation.means == Operation::Asks ? Step() : operation.act, w);
    QTRY_VERIFY(w.told().contains(u"alpha is read-only"_s));
}

/// Answers a question that asks for the context's name.
void typeName(const Windows &w)
{
    QTRY_VERIFY(w.question());
    const OpenQuestion question = w.question();
    auto *field = question->findChild<QLineEdit *>();
    QVERIFY(field);
    const auto confirms = [&] { return question.buttons().first()->isEnabled(); };
    for (const QString &wrong : {QString(), u"Alpha"_s, u"alpha "_s, u"alph"_s}) {
        field->setText(wrong);
        QTest::keyClick(field, Qt::Key_Return);
        QVERIFY2(question && !confirms(), qPrintable(wrong));
    }
    QTest::keyClicks(field, u"a"_s);
    QVERIFY(confirms());
    QTest::keyClick(field, Qt::Key_Return);
    QVERIFY(!question);
}

} // namespace

/// Whatever happens around a command, it goes where its window showed it to go when the user gave it, or it
/// is refused and the user told why.
class tst_right_cluster : public QObject
{
    Q_OBJECT
private:
    std::unique_ptr<Machine> m_machine;
    std::unique_ptr<Windows> m_windows; ///< of everyPolicy
    const QDateTime m_written{{2020, 1, 1}, {}}; ///< the kubeconfig

    QStringList runs() const
    {
        return QString::fromUtf8(m_machine->read(u"runs"_s)).split(u'\n', Qt::SkipEmptyParts);
    }

private Q_SLOTS:
    void initTestCase() { m_machine = std::make_unique<Machine>(); }
    void cleanupTestCase()
    {
        m_windows.reset();
        m_machine.reset();
    }
    void init()
    {
        QDir folder(m_machine->path());
        folder.rmdir(u"kubeconfig.lock"_s);
        for (const QString &left : folder.entryList(
                 {u"hold-*"_s, u"held-*"_s, u"kill-*"_s, u"runs"_s, u"settings.json"_s}, QDir::Files)) {
            folder.remove(left);
        }
        m_machine->write(u"kubeconfig"_s, kubeConfigText);
        QFile file(m_machine->kubeConfig());
        QVERIFY(file.open(QIODevice::ReadWrite) && file.setFileTime(m_written, QFile::FileModificationTime));
    }

    void everyPolicy_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<ContextAccess>("access");
        for (const ContextAccess access :
            {ContextAccess::Free, ContextAccess::Protected, ContextAccess::ReadOnly}) {
            for (const Operation &operation : operations()) {
                if (operation.means != Operation::Shows) {
                    QTest::addRow("%s: %s", qPrintable(nameOf(access)), operation.name)
                        << operation << access;
                }
            }
        }
    }

    /// Free: what asks nothing is done at once. Protected: each question wants the context's name. Read-only:
    /// the reason instead.
    void everyPolicy()
    {
        QFETCH(Operation, operation);
        QFETCH(ContextAccess, access);
        if (!m_windows) {
            m_windows = std::make_unique<Windows>(*m_machine);
        }
        Windows &w = *m_windows;
        w.settings.set(u"preferredEditor"_s, u"Kate"_s);
        w.page().windowConsoleController().clearLogs();
        ContextPolicies::shared().set(shownContext(w.state()), {access, ContextColour::None});
        const QToolButton *badge = w.page().toolBar().accessBadge();
        QCOMPARE(badge->isVisible(), access != ContextAccess::Free);
        QCOMPARE(badge->text(), nameOf(access));
        if (access == ContextAccess::ReadOnly && !operation.onlyReads()) {
            isRefused(w, operation);
            QVERIFY(!w.question());
            QCOMPARE(runs(), QStringList());
            return;
        }
        if (operation.begin) {
            operation.begin(w);
        } else {
            step(operation.ask, w);
            step(operation.means == Operation::Asks ? Step() : operation.act, w);
        }
        if (access == ContextAccess::Protected && !operation.onlyReads()) {
            typeName(w);
        } else if (operation.means == Operation::Asks) {
            QTRY_VERIFY(w.question());
            QVERIFY(!w.question()->findChild<QLineEdit *>());
            operation.act(w);
        }
        QTRY_COMPARE(runs().size(), 1);
        QVERIFY2(runs().first().startsWith(operation.run), qPrintable(runs().first()));
        QTRY_VERIFY(w.page().windowConsoleController().scriptsRunning().isEmpty());
        QTRY_VERIFY(!w.question());
    }
    void lastPolicy() { m_windows.reset(); }

    void everyRun_data()
    {
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<Disturbance>("disturbance");
        for (const Disturbance &disturbance : disturbances()) {
            for (const Operation &operation : operations()) {
                // What only reads may be given up, or read what is there now.
                if (!operation.onlyReads()
                    || (operation.means == Operation::Shows && disturbance.outcome == Outcome::Runs)) {
                    QTest::addRow("%s: %s", disturbance.name, operation.name) << operation << disturbance;
                }
            }
        }
    }

    void everyRun()
    {
        QFETCH(Operation, operation);
        QFETCH(Disturbance, disturbance);
        QString place;
        {
            Windows windows(*m_machine);
            QCOMPARE(windows.shown(), u"alpha three https://alpha.invalid"_s);
            step(disturbance.before, windows);
            step(operation.ask, windows);
            place = windows.shown();
            step(disturbance.between, windows);
            const bool canAct = windows.question() || !operation.ask || windows.asked
                || !windows.table().selectedObjects().isEmpty();
            // With its window a run may end before it came to anything.
            const QRegularExpression stopped(u"was ended together with its window|was stopped before"_s);
            const qsizetype stoppedBefore = windows.told().count(stopped);
            if (canAct) {
                operation.act(windows);
            }
            step(disturbance.after, windows);
            const QRegularExpression refusal(operation.notDone);
            const auto hasEnded = [&] {
                return !canAct || !runs().isEmpty() || windows.told().contains(refusal)
                    || (!windows.first && windows.told().count(stopped) > stoppedBefore)
                    || (operation.onlyReads()
                        && (!windows.first || windows.table().selectedObjects().isEmpty()));
            };
            QVERIFY2(within(hasEnded), qPrintable(u"neither run nor refused:\n"_s + windows.told()));
            QVERIFY(windows.isSettled());
            const bool ran = !runs().isEmpty();
            const bool mayBeGivenUp = operation.onlyReads() && disturbance.after;
            if (disturbance.outcome == Outcome::Runs && !mayBeGivenUp) {
                QVERIFY2(ran, qPrintable(u"not run:\n"_s + windows.told()));
            } else if (disturbance.outcome == Outcome::Refused) {
                QVERIFY2(!ran, qPrintable(runs().join(u'\n')));
            }
        }
        for (const QString &run : runs()) {
            QVERIFY2(run.startsWith(operation.run), qPrintable(run));
            QCOMPARE(run.section(u'\t', 1), place);
        }
        QVERIFY2(runs().size() <= 1, qPrintable(runs().join(u'\n')));
        if (operation.onlyReads()
            && qstrcmp(disturbance.name, "undisturbed") == 0) { // nor has looking changed it
            QCOMPARE(m_machine->read(u"kubeconfig"_s), kubeConfigText);
            QCOMPARE(QFileInfo(m_machine->kubeConfig()).lastModified(), m_written);
            QCOMPARE(QDir(m_machine->path()).entryList({u"kubeconfig*"_s}, QDir::Files),
                QStringList{u"kubeconfig"_s});
        }
    }
};

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == secondProcess) {
        return actAsSecondProcess(arguments.value(2));
    }
    tst_right_cluster test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_right_cluster.moc"
