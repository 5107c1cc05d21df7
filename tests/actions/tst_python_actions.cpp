// SPDX-License-Identifier: GPL-3.0-or-later
#include "ActionBench.h"
#include "actions/ActionForm.h"
#include "support/Patience.h"
#include "support/Table.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

const QByteArray smart = R"({"scope":"pod","is_smart_action":true})";

/// What an action is made of when it is written without the module for it.
const QByteArray bare = R"(
class Log: pass
class Action:
    def __init__(self):
        self._logger = Log()
        self._logger.log = []
        self._callback = None
        self._state = {}
    def _run_callback(self, *arguments): self._callback(*arguments)
    def run(self):
)";

} // namespace

class TestPythonActions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        // A Python of the user's may have modules with any name.
        for (const auto &name : {u"main.py"_s, u"helper.py"_s}) {
            m_elsewhere.write(name, "raise ValueError('elsewhere')");
        }
        qputenv("PYTHONPATH", m_elsewhere.path().toUtf8());
    }
    void init() { m_bench = std::make_unique<ActionBench>(); }
    void cleanup() { m_bench.reset(); }

    void outcomes_data()
    {
        // body of run (the whole script when it begins with a line feed), beginning of the entries
        // ("command||error" joined with line feeds), question
        const Table<QByteArray, QString, QString> table;
        const char *const raised = "||Recieved python exception ";
        const auto fails = [&](const char *name, const QByteArray &body, const QByteArray &what) {
            table.row(name, body, QByteArray(raised + what));
        };
        table.row("logs and raises", "self._logger.log = ['one']; raise ValueError('bad')",
            "one||\n||Recieved python exception ValueError: bad.");
        const auto numbers = [](int from, int to, const QString &separator) {
            QStringList lines;
            for (int number = from; number < to; ++number) {
                lines.append(QString::number(number));
            }
            return QByteArray((lines.join(separator)).toUtf8());
        };
        table.row("log is endless", "self._logger.log = [str(n) for n in range(30000)]",
            "... 10000 earlier lines are left out||\n" + numbers(10'000, 30'000, u"||\n"_s));
        fails("exits", "import sys; sys.exit(3)", "SystemExit: 3.");
        fails("text of an exception fails",
            "class Odd(Exception):\n            def __str__(self): raise Odd\n        raise Odd",
            "main.Action.run.<locals>.Odd: <exception str() failed>.");
        fails("deeper recursion, through C",
            "import sys; sys.setrecursionlimit(10**8)\n        def f(x): return sorted([1, 2], key=f)\n"
            "        f(1)",
            "RecursionError: maximum recursion depth exceeded");
        const auto refused = [&](const char *call, const QByteArray &module) {
            fails(call, "import os, signal; " + QByteArray(call), "PermissionError: " + module);
        };
        refused("os.fork()", "os.fork: an action runs inside of Tidewright; start children with subprocess.");
        refused("os.execl('/bin/true', 'true')", "os.execv");
        refused("os._exit(1)", "os._exit");
        refused("signal.alarm(1)", "signal.alarm");
        refused("signal.signal(signal.SIGTERM, signal.SIG_IGN)", "signal.signal");
        fails("what Python takes for its main thread",
            "import multiprocessing, os, threading; place = '/proc/self/task/'\n"
            "        lives = os.path.exists(f'{place}{threading.main_thread().native_id}')\n"
            "        raise ValueError(multiprocessing.get_start_method() + str(lives))",
            "ValueError: spawnTrue.");
        fails("reads the terminal", "input()", "EOFError: EOF when reading a line.");
        fails("half a character", "raise ValueError('\\udc80')", "ValueError: ?.");
        table.row("does not import", "\nimport nowhere_to_be_found",
            "||Recieved exception ModuleNotFoundError: No module named 'nowhere_to_be_found'.");
        table.row("exits while it is imported", "\nraise SystemExit", "||Recieved exception SystemExit.");
        fails("has no class", "\nAction = None", "TypeError: 'NoneType' object is not callable.");
        const QByteArray asks = "raise type('OKDialog', (Exception,), {})";
        table.row("dialog with too many lines",
            "self._state = {'dialog_text': '\\n'.join(str(n) for n in range(2500)) + '\\U0001f600'}\n        "
                + asks,
            "",
            "Alert!|" + numbers(0, 2000, u"\n"_s)
                + "\u2026\n\n2,501 more characters are left out (lines: 500).|OK");
        for (const QByteArray &state : {"self._state = {'title': 'T', 'n': 1}"_ba, "self._state = 7"_ba,
                 "del self._state"_ba, "del self._logger"_ba}) {
            table.row("asks, " + state, state + "\n        " + asks, "", "Alert!||OK");
        }
        table.row("asks where failures are caught", R"(
import tidewright_actions
class Action(tidewright_actions.Action):
    def run(self):
        try: self.ask("Sure?")
        except Exception as error: self.log(repr(error))
)",
            "", "Alert!|Sure?|OK");
        table.row("form with odd fields",
            "self.form = Log(); self.form.fields = {1: 2, 'a': None, 'b': Log()}\n"
            "        raise type('FormDialog', (Exception,), {})",
            "", "Alert!||OK");
        fails("class derived from a request",
            "class OKDialog(Exception): pass\n        class Mine(OKDialog): pass\n        raise Mine('x')",
            "main.");
    }
    void outcomes()
    {
        const auto [body, entries, question] = Table<QByteArray, QString, QString>::current();
        const auto item = run(body.startsWith('\n') ? body : bare + "        " + body + '\n');
        QTRY_VERIFY(m_bench->isIdle());
        QTRY_COMPARE(m_bench->question(), question);
        const QString shown = m_bench->console.entries.join(u'\n');
        QVERIFY2(entries.isEmpty() ? shown.isEmpty() : shown.startsWith(entries), qPrintable(shown));
        QVERIFY(m_bench->console.entries.size() <= 20'001);
        QVERIFY(m_bench->notifications.isEmpty());
    }

    void answers_data()
    {
        const Table<QByteArray, bool, QString, QString> table;
        table.row("first button", QByteArray("OKCancelDialog"), true, u"OK"_s, u"(True,)||"_s);
        table.row("second button", QByteArray("OKDialog"), true, u"No"_s, u"(False,)||"_s);
        table.row("nobody waits", QByteArray("OKDialog"), false, u"OK"_s, QString());
        table.row("notification", QByteArray("Notification"), true, QString(), u"()||"_s);
        table.row("form", QByteArray("FormDialog"), true, u"OK"_s, u"({},)||"_s);
        table.row("form, declined", QByteArray("FormDialog"), true, u"No"_s, QString());
        const QByteArray dialog = "OKDialog";
        table.row("one button, Escape", dialog, true, u"Escape"_s, u"(False,)||"_s);
    }
    void answers()
    {
        const auto [request, waits, button, entries] = Table<QByteArray, bool, QString, QString>::current();
        const auto item = run(bare + R"(
        self._state = {"cancel_button_text": ")"
            + (button == u"Escape" ? "" : "No")
            + R"(", "title": "T", "subtitle": "S", "informative_text": "I"}
        self._callback = )"
            + (waits ? "lambda *all: self._logger.log.append(repr(all))" : "None") + "\n        raise type('"
            + request + "', (Exception,), {})\n");
        if (!button.isEmpty()) {
            QTRY_VERIFY(m_bench->dialog());
            if (button == u"Escape") {
                QTest::keyClick(m_bench->dialog(), Qt::Key_Escape);
            } else {
                m_bench->press(button);
            }
        }
        QTRY_VERIFY(m_bench->isIdle());
        const bool isDialog = request != "Notification";
        QTRY_VERIFY(isDialog ? !m_bench->dialog() : !m_bench->notifications.isEmpty());
        const auto later = run(bare + "        self._logger.log = ['later']\n", {}, u"later"_s);
        QTRY_COMPARE(m_bench->console.entries.filter(u"later"_s).size(), 1);
        QTRY_COMPARE(m_bench->console.entries.size(), entries.isEmpty() ? 1 : 2);
        QVERIFY(entries.isEmpty() || m_bench->console.entries.contains(entries));
        QCOMPARE(
            m_bench->notifications, request == "Notification" ? QStringList{u"T|S\nI"_s} : QStringList());
    }

    void questionsFollowOneAnother()
    {
        const auto item = run(R"(
import tidewright_actions as tw
class Action(tw.Action):
    def run(self):
        self.log("asking")
        self.ask("Sure?", title="First", ok="Go", cancel="Stop", then=self.fill)
    def fill(self, accepted):
        self.log(f"accepted: {accepted}")
        self.ask_form("Fill", {
            "name": tw.TextField(placeholder="any", initial="web"),
            "kind": tw.DropDown(["a & b", "c", "d"], "Kind", initial="c"),
            "dry": tw.CheckBox("Dry & safe", checked=True)}, then=self.filled)
    def filled(self, values):
        self.log(str(sorted(values.items())))
        self.notify("Done", "all of it", then=self.end)
    def end(self):
        self.log("end")
)");
        QTRY_COMPARE(m_bench->question(), u"First|Sure?|Go,Stop"_s);
        QTRY_VERIFY(m_bench->isIdle());
        m_bench->press(u"Go"_s);
        QTRY_COMPARE(m_bench->question(), u"Alert!|Fill|OK,Cancel"_s);
        const OpenQuestion box = m_bench->dialog();
        const auto *form = box->findChild<ActionForm *>();
        auto *name = form->findChild<QLineEdit *>();
        const auto *list = form->findChild<QComboBox *>();
        auto *checked = form->findChild<QCheckBox *>();
        QCOMPARE(QStringList({name->accessibleName(), name->placeholderText(), list->accessibleName(),
                     list->currentText(), checked->accessibleName(), checked->text()}),
            QStringList({u"name"_s, u"any"_s, u"Kind"_s, u"c"_s, u"Dry & safe"_s, u"Dry && safe"_s}));
        name->selectAll();
        name->insert(u"käse"_s);
        checked->click();
        QTest::keyClick(name, Qt::Key_Return); // what is filled in is not thrown away
        QTRY_COMPARE(m_bench->console.entries,
            QStringList({u"asking||"_s, u"accepted: True||"_s,
                u"[('dry', False), ('kind', 'c'), ('name', 'käse')]||"_s, u"end||"_s}));
        QCOMPARE(m_bench->notifications, QStringList{u"Done|all of it"_s});
    }

    void placeOfKubectl_data()
    {
        // arguments, namespace, what is added (or the beginning of why not)
        const Table<QString, QString, QString> table;
        const auto rows = [&table](const QString &nameSpace, const QString &added, const QStringList &lines) {
            for (const QString &arguments : lines) {
                table.row((nameSpace + u": " + arguments).toUtf8(), arguments, nameSpace, added);
            }
        };
        rows(u"dev"_s, u" --context=c -n dev"_s,
            {u"get po"_s, u"exec p -- x -n staging --context=d"_s, u"get po -ojson -fnA"_s});
        rows(u"dev"_s, u" --context=c"_s,
            {u"delete job x -n staging"_s, u"-nstaging get po"_s, u"get po -n=staging"_s,
                u"get -wn staging po"_s, u"get po --namespace staging"_s, u"get po --namespace=staging"_s,
                u"get -A po"_s, u"get po --all-namespaces"_s, u"config set-context x"_s});
        rows(u"dev"_s, u" -n dev"_s,
            {u"get po --context=d"_s, u"get po --context d"_s, u"get po --kubeconfig=f"_s});
        rows(u"dev"_s, {}, {u"get po --kubeconfig f --namespace x"_s});
        const QString all = u"All Namespaces"_s;
        rows(all, u" --context=c --all-namespaces"_s,
            {u"get po -o name"_s, u"describe po"_s, u"top po"_s, u"--request-timeout=5s get po"_s});
        rows(all, u" --context=c"_s,
            {u"top nodes"_s, u"version"_s, u"auth can-i get po"_s, u"config view"_s,
                u"delete jobs --all -n dev"_s});
        rows(all, u"choose a namespace first"_s,
            {u"delete jobs --field-selector=status.successful=1"_s, u"rollout status deployment/x"_s,
                u"auth reconcile -f x"_s, u"--user get delete jobs --all"_s});
    }
    void placeOfKubectl()
    {
        auto [arguments, nameSpace, added] = Table<QString, QString, QString>::current();
        m_bench->write(u"kubectl.sh"_s, "#!/bin/sh\necho \"$*\" >&2\n");
        setKubectlPath(m_bench->path(u"kubectl.sh"_s));
        const auto item = run(R"(
import tidewright_actions as tw
class Action(tw.Action):
    def run(self):
        try: self.kubectl(*self.environment["ARGUMENTS"].split())
        except tw.KubectlError as error: self.log(error)
)",
            {{u"ARGUMENTS"_s, arguments}, {u"CONTEXT"_s, u"c"_s}, {u"NAMESPACE"_s, nameSpace}});
        QTRY_VERIFY(m_bench->isIdle());
        const QString told = m_bench->console.entries.join(u'\n');
        if (added.startsWith(u"choose")) {
            QVERIFY2(told.startsWith(added), qPrintable(told));
        } else { // what a command that went well says on its standard error is logged
            const auto end = arguments.contains(u" -- "_s) ? arguments.indexOf(u" -- "_s) : arguments.size();
            QCOMPARE(told, u"kubectl %1||\n%1||"_s.arg(arguments.insert(end, added)));
        }
    }

    void twoRunsOfOneAction_data()
    {
        QTest::addColumn<QStringList>("order"); // of the starts, the answers and the end of prod's loop
        QTest::newRow("the other way round")
            << QStringList{u"+prod"_s, u"+dev"_s, u"stop"_s, u"prod p prod prod"_s, u"dev none dev dev"_s};
        QTest::newRow("one answered while the other runs")
            << QStringList{u"+dev"_s, u"+prod"_s, u"dev none dev prod"_s, u"stop"_s, u"prod p prod prod"_s};
    }
    void twoRunsOfOneAction()
    {
        QFETCH(QStringList, order);
        m_bench->write(u"kubectl.sh"_s, "#!/bin/sh\necho $CONTEXT ${POD-none}\n");
        setKubectlPath(m_bench->path(u"kubectl.sh"_s));
        const auto item = m_bench->action(u"act"_s, smart, "main.py", R"(
import os, tidewright_actions
class Action(tidewright_actions.Action):
    def run(self):
        stop = self.environment.get("STOP")
        if stop: open(stop + "pable", "w").close()
        while stop and not os.path.exists(stop): pass
        self.ask("Sure?", title=self.context, then=self.go)
    def go(self, accepted):
        child = os.popen("echo $CONTEXT").read().strip()
        self._logger.log = [" ".join((self.kubectl("x").strip(), child, os.environ["CONTEXT"]))]
)");
        for (const QString &step : std::as_const(order)) {
            const QString context = step.section(u' ', 0, 0);
            if (step == u"+prod") {
                item->performAction(
                    {{u"CONTEXT"_s, u"prod"_s}, {u"POD"_s, u"p"_s}, {u"STOP"_s, m_bench->path(u"stop"_s)}});
                QTRY_VERIFY(m_bench->has(u"stoppable"_s)); // its variables are the interpreter's
                continue;
            }
            if (step == u"+dev") {
                item->performAction({{u"CONTEXT"_s, u"dev"_s}});
                QTRY_COMPARE(m_bench->question(), u"dev|Sure?|OK"_s);
                continue;
            }
            if (step == u"stop") {
                m_bench->write(u"stop"_s, "");
                QTRY_COMPARE(item.use_count(), 1L);
                continue;
            }
            for (const OpenQuestion &box : OpenQuestion::all(m_bench->window)) {
                if (box.title() == context) {
                    QVERIFY(box.says(u"Context: %1"_s.arg(context)));
                    box.press(u"OK"_s);
                }
            }
            QTRY_COMPARE(m_bench->console.entries, QStringList{step + u"||"_s});
            m_bench->console.entries.clear();
        }
    }

    void endsOfTheProgram_data()
    {
        const Table<QByteArray, QString> table;
        table.row("quit in order, the script goes on", QByteArray(), u"exit 0"_s);
        table.row("the script crashes", QByteArray("os.kill(os.getpid(), 6)"), u"signal 6"_s);
    }
    /// Whatever a script does, what it has printed is there.
    void endsOfTheProgram()
    {
        const auto [end, howItEnded] = Table<QByteArray, QString>::current();
        m_bench->write(u"act/main.py"_s,
            "import os\n" + bare + "        print('more\\n' * 2000)\n        while not os.path.exists('"
                + m_bench->path(u"go"_s).toUtf8() + "'): pass\n        " + end
                + "\n        while True: print('more')\n");
        m_bench->write(u"act/config.json"_s, smart);
        QProcess program;
        program.start(QStringLiteral(ACTION_HOST_PATH), {m_bench->path(u"act"_s)});
        QByteArray printed;
        const auto hasPrinted = [&] {
            printed += program.readAllStandardOutput();
            return printed.count("more\n") >= 2000;
        };
        QTRY_VERIFY(hasPrinted());
        m_bench->write(u"go"_s, "");
        if (end.isEmpty()) {
            program.write("quit\n");
        }
        QVERIFY(program.waitForFinished(10'000));
        const bool crashed = program.exitStatus() == QProcess::CrashExit;
        const QString ended = (crashed ? u"signal %1"_s : u"exit %1"_s).arg(program.exitCode());
        QCOMPARE(ended, howItEnded);
    }

    void environmentStaysTheInterpretersOwn()
    {
        QString printed;
        {
            const CapturedOutput output;
            const auto item = run(R"(
import os, subprocess, sys
print("while importing", end="")
class Log: log = []
class Action:
    _logger = Log()
    def run(self):
        print("one\ntwo", "three", end=""); print("!", file=sys.stderr)
        shell = subprocess.run("echo $TOKEN", shell=True, capture_output=True, text=True).stdout.strip()
        status = os.system("test $TOKEN = t && exit 3")
        Log.log = [os.environ["TOKEN"], shell, str(os.waitstatus_to_exitcode(status))]
)",
                {{u"TOKEN"_s, u"t"_s}});
            QTRY_VERIFY(m_bench->isIdle());
            printed = output.text();
        }
        QCOMPARE(m_bench->console.entries, QStringList({u"t||"_s, u"t||"_s, u"3||"_s}));
        QVERIFY(qgetenv("TOKEN").isEmpty());
        QVERIFY2(printed.endsWith(u"while importing\none\ntwo three!\n"_s), qPrintable(printed));
    }

    void searchPath()
    {
        const QByteArray script = R"(
import os, sys
class Log: pass
class Action:
    def __init__(self):
        sys.path.append("/junk")
        self.stop = os.environ["STOP"]
        open(self.stop + "pable", "w").close()
        while not os.path.exists(self.stop): pass
    def run(self):
        self._logger = Log()
        self._logger.log = [str("/junk" in sys.path)]
)";
        const auto endless = run(script, {{u"STOP"_s, m_bench->path(u"stop"_s)}}, u"endless"_s);
        QTRY_VERIFY(m_bench->has(u"stoppable"_s)); // its variables are the interpreter's
        // Beside an endless loop everything else works, and each action gets its own "main".
        const QByteArray paths
            = "        import sys; self._logger.log = [__file__.split('/')[-2]] + sys.path[-3:]\n";
        auto other = run(bare + paths, {}, u"other"_s);
        const QString top = m_bench->path();
        QTRY_COMPARE(m_bench->console.entries,
            QStringList({u"other||"_s, top + u"/other||"_s, top + u"/endless||"_s, u"/junk||"_s}));
        const auto shell = m_bench->action(u"shell"_s, R"({"scope":"pod"})", "main.sh", "#!/bin/sh\n");
        shell->performAction({});
        QTRY_COMPARE(m_bench->console.entries.size(), 5);
        QTRY_COMPARE(m_bench->console.scriptsRunning(), QStringList{u"endless"_s});
        m_bench->write(u"stop"_s, "");
        QTRY_COMPARE(m_bench->console.entries.value(5), u"True||"_s);
        QTRY_COMPARE(endless.use_count() + other.use_count(), 2L); // their folders are off the search path
        m_bench->console.entries.clear();
        other->performAction({});
        QTRY_COMPARE(m_bench->console.entries.filter(top), QStringList{top + u"/other||"_s});
        QVERIFY(!m_bench->console.entries.contains(u"/junk||"_s));
    }

    void modulesBesideTheScript()
    {
        const QByteArray script = R"(
import importlib, pickle, sys, tidewright_actions, typing
class Mine: own: "Mine"
class Action(tidewright_actions.Action):
    def run(self):
        __import__("pkgutil").resolve_name("stray") # as a module of others
        self.ask("Now?", title=self.context, then=self.answered)
    def answered(self, accepted):
        import helper, __parts__.deep as deep, json
        from __parts__.end import mark
        made = {}
        exec("import helper", made)
        every = {helper, importlib.import_module("helper"), __import__("helper"), made["helper"]}
        self.log(" ".join((helper.who, deep.who, mark, json.dumps(len(every)))))
        self.log(str((type(pickle.loads(pickle.dumps(Mine()))) is typing.get_type_hints(Mine)["own"],
            "stray" in sys.modules)))
        raise helper.Error("x")
)";
        std::vector<std::shared_ptr<CustomActionItem>> items;
        for (const auto &title : {u"first"_s, u"second"_s}) {
            const QByteArray name = title.toUtf8();
            m_bench->write(title + u"/helper.py"_s, "class Error(Exception): pass\nwho = '" + name + "'\n");
            m_bench->write(title + u"/stray.py"_s, "");
            m_bench->write(title + u"/__parts__/deep.py"_s,
                "import helper\nfrom . import end\nwho = helper.who + end.mark\n");
            m_bench->write(title + u"/__parts__/end.py"_s, "mark = '!'\n");
            items.push_back(run(script, {{u"CONTEXT"_s, title}}, title));
            QTRY_COMPARE(std::size_t(OpenQuestion::all(m_bench->window).size()), items.size());
            QTRY_COMPARE(items.back().use_count(), 1L); // its folder is no longer on the search path
        }
        for (const auto &title : {u"first"_s, u"second"_s}) {
            m_bench->console.entries.clear();
            m_bench->press(u"OK"_s);
            QTRY_COMPARE(m_bench->console.entries,
                QStringList({u"%1 %1! ! 1||"_s.arg(title), u"(True, False)||"_s,
                    u"||Recieved python exception helper.Error: x."_s}));
        }
    }

    void loadedAfreshEachTime()
    {
        m_bench->write(u"act/helper.py"_s, "text = 'a'\n");
        const QByteArray script = "import helper\n" + bare + "        self._logger.log = [helper.text + '";
        auto item = run(script + "1']\n");
        QTRY_COMPARE(m_bench->console.entries, QStringList{u"a1||"_s});
        m_bench->write(u"act/main.py"_s, script + "2']\n"); // same size, same second
        m_bench->write(u"act/helper.py"_s, "text = 'b'\n");
        item->performAction({});
        QTRY_COMPARE(m_bench->console.entries, QStringList({u"a1||"_s, u"b2||"_s}));
        QVERIFY(!m_bench->has(u"act/__pycache__"_s));
        const std::weak_ptr<CustomActionItem> weak = item;
        item.reset();
        QTRY_VERIFY(weak.expired());
    }

    void endlessImport()
    {
        const QString stop = m_bench->path(u"stop"_s);
        const auto endless = run("import os\nopen(os.environ['STOP'] + 'pable', 'w').close()\nwhile not "
                                 "os.path.exists(os.environ['STOP']): pass\n"
                + bare + "        pass\n",
            {{u"STOP"_s, stop}}, u"endless"_s);
        QTRY_VERIFY(m_bench->has(u"stoppable"_s));
        const auto other = run(bare + "        pass\n", {}, u"other"_s);
        QTRY_COMPARE(m_bench->console.entries,
            QStringList{u"||Recieved exception another Python action is still being loaded; try again when "
                        "it is done."_s});
        QTRY_COMPARE(m_bench->console.states.last(), u"endless"_s);
        m_bench->write(u"stop"_s, "");
        QTRY_VERIFY(m_bench->console.scriptsRunning().isEmpty());
    }

private:
    std::shared_ptr<CustomActionItem> run(
        const QByteArray &script, const ActionEnvironment &environment = {}, const QString &title = u"act"_s)
    {
        auto item = m_bench->action(title, smart, "main.py", script);
        item->performAction(environment);
        return item;
    }

    TestFolder m_elsewhere;
    std::unique_ptr<ActionBench> m_bench;
};

QTEST_MAIN(TestPythonActions)
#include "tst_python_actions.moc"
