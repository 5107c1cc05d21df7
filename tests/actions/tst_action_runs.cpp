// SPDX-License-Identifier: GPL-3.0-or-later
#include "ActionBench.h"
#include "actions/ActionTerminal.h"
#include "external/TerminalQuoting.h"
#include "support/Patience.h"
#include "support/Table.h"

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

const auto missing
    = u"Required Environment Variables Missing|There are environment variables that need to be set "
      "to run this command.  Please set \"%1\" in Preferences: Advanced and try again.|OK"_s;

const auto token = u"s3cret"_s; // a value that nobody is to see, which actions with these words get
const QByteArray needsToken = R"({"scope":"pod","environment_variables":["TOKEN"])";

} // namespace

class TestActionRuns : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_bench = std::make_unique<ActionBench>();
        setKubectlPath(u"/the/kubectl"_s);
        m_bench->settings.set(u"customEnvVars"_s, UserDefaults::Dictionary{{u"TOKEN"_s, token}});
    }
    void cleanup() { m_bench.reset(); }

    void environment_data()
    {
        // names that the action needs, setting ("-" none, "!" of another type, else those that have a value),
        // environment, names that are told to be missing
        const Table<QByteArray, QString, QString, QString> table;
        table.row("none needed", "[]", "A", "CONTEXT=c KUBECTL=/the/kubectl", "");
        table.row("all there, others kept back", R"(["B","A"])", "A B C",
            "A=a B=b CONTEXT=c KUBECTL=/the/kubectl", "");
        table.row("some missing, in their order", R"(["Z","A","B"])", "A", "", "Z, B");
        table.row("no setting", R"(["B","A"])", "-", "", "B, A");
        table.row("setting of another type", R"(["A"])", "!", "", "A");
    }
    void environment()
    {
        const auto [names, setting, environment, asked]
            = Table<QByteArray, QString, QString, QString>::current();
        const QString key = u"customEnvVars"_s;
        m_bench->settings.remove(key);
        if (setting == u"!") {
            m_bench->settings.set(key, u"A"_s);
        } else if (setting != u"-") {
            UserDefaults::Dictionary values;
            for (const QString &name : setting.split(u' ')) {
                values.insert(name, name.toLower());
            }
            m_bench->settings.set(key, values);
        }
        const auto item = m_bench->action(
            u"act"_s, R"({"scope":"pod","environment_variables":)" + names + '}', "main.sh", "");
        const auto built = item->buildEnvironment({{u"CONTEXT"_s, u"c"_s}});
        QStringList entries;
        for (const auto &[name, value] : built.value_or(ActionEnvironment()).toStdMap()) {
            entries.append(name + u'=' + value);
        }
        QCOMPARE(entries.join(u' '), environment);
        QCOMPARE(built.has_value(), asked.isEmpty());
        if (!built) {
            QTRY_COMPARE(m_bench->question(), missing.arg(asked));
            item->performAction({});
            QTRY_COMPARE(OpenQuestion::all(m_bench->window).size(), 2);
            QVERIFY(m_bench->console.states.isEmpty());
        }
    }

    void confirmation_data()
    {
        const Table<QByteArray, QString, QString, bool> table;
        const auto question = [](const char *text) -> QString {
            return u"Confirm Action|"_s + QString::fromUtf8(text) + u"|OK,Cancel"_s;
        };
        table.row("none asked for", QByteArray(R"({"scope":"pod"})"), QString(), QString(), true);
        table.row("accepted", QByteArray(R"({"scope":"pod","show_warning_text":"Sure?"})"), question("Sure?"),
            u"OK"_s, true);
        table.row("declined", QByteArray(R"({"scope":"pod","show_warning_text":"Sure?"})"), question("Sure?"),
            u"Cancel"_s, false);
        table.row("no configuration", QByteArray(), question(""), u"OK"_s, true);
        table.row("unusable configuration", QByteArray("{"), question(""), u"Cancel"_s, false);
        table.row("another context", QByteArray(R"({"scope":"pod","active_in_contexts":["d"]})"), QString(),
            QString(), false);
    }
    void confirmation()
    {
        const auto [config, question, answer, runs] = Table<QByteArray, QString, QString, bool>::current();
        const auto item = m_bench->action(u"act"_s, config, "main.sh", "#!/bin/sh\necho hello\n");
        item->performAction({{u"CONTEXT"_s, u"c"_s}});
        QCOMPARE(m_bench->question(), question);
        if (!answer.isEmpty()) {
            QVERIFY(m_bench->console.states.isEmpty());
            m_bench->press(answer);
        }
        if (runs) {
            QTRY_COMPARE(m_bench->console.states, QStringList({u"act"_s, u""_s}));
            QCOMPARE(m_bench->console.entries,
                QStringList{u"env CONTEXT=c KUBECTL=/the/kubectl "_s + item->scriptURL() + u"|hello\n|"_s});
        } else {
            QTRY_COMPARE(item.use_count(), 1L); // no run holds it
            bool isLater = false;
            mainQueue().post([&isLater] { isLater = true; });
            QTRY_VERIFY(isLater);
            QVERIFY(m_bench->console.states.isEmpty() && m_bench->console.entries.isEmpty());
        }
    }

    void background_data()
    {
        // title, script, what the entry shows
        const Table<QString, QByteArray, QString> table;
        table.row("odd values arrive as they are", u"a b"_s,
            QByteArray("#!/bin/sh\nprintf '<%s>' \"$VALUE\" ${#TOKEN}\n"),
            u"|<q\" b , \\ $HOME `id` 'x'\n><6>|"_s);
        table.row("a path with an equals sign", u"a=b $x"_s, QByteArray("#!/bin/sh\necho $KUBECTL\n"),
            u"|/the/kubectl\n|"_s);
        table.row("standard error", u"e"_s, QByteArray("#!/bin/sh\necho out\necho err >&2\nexit 3\n"),
            u"|out\n|err\n"_s);
        table.row("not executable", u"n"_s, QByteArray(), u"Permission denied"_s);
    }
    void background()
    {
        const auto [title, script, shown] = Table<QString, QByteArray, QString>::current();
        const CapturedOutput diagnostics;
        const auto item = m_bench->action(title, needsToken + '}', "main.sh", script);
        if (script.isEmpty()) {
            QFile::setPermissions(item->scriptURL(), QFile::ReadOwner);
        }
        item->performAction({{u"VALUE"_s, u"q\" b , \\ $HOME `id` 'x'\n"_s}});
        QTRY_COMPARE(m_bench->console.states, QStringList({title, u""_s}));
        const QString entry = m_bench->console.entries.join(u" AND "_s);
        QVERIFY2(entry.startsWith(u"env KUBECTL=/the/kubectl TOKEN=… VALUE=q"_s) && entry.contains(shown),
            qPrintable(entry));
        const QString copied = m_bench->console.shellLines.join(u" AND "_s);
        QVERIFY2(copied.startsWith(u"env KUBECTL=/the/kubectl 'TOKEN=…' 'VALUE=q"_s), qPrintable(copied));
        QVERIFY(!QString(entry + copied + diagnostics.text()).contains(token));
    }

    void aScriptCanBeStopped()
    {
        const auto item = m_bench->action(u"act"_s, R"({"scope":"namespace"})", "main.sh",
            "#!/bin/sh\necho begun\nsleep 1000 & sleep 1000\n");
        item->performAction({});
        QTRY_COMPARE(m_bench->console.stoppableScripts(), QStringList{u"act"_s});
        m_bench->console.stopScripts();
        QTRY_COMPARE(m_bench->console.states, QStringList({u"act"_s, u""_s}));
        QVERIFY(m_bench->console.stoppableScripts().isEmpty());
        QVERIFY2(m_bench->console.entries.join(u'|').contains(u"was stopped before it had finished"_s),
            qPrintable(m_bench->console.entries.join(u'|')));
    }

    void terminal_data()
    {
        // title, value, line that is shown (%1 for the folder)
        const Table<QString, QString, QString> table;
        table.row("quote", u"act"_s, u"a\"b"_s,
            uR"(env KUBECTL=\"/the/kubectl\" TOKEN=\"…\" V=\"a\\\"b\" \"%1/act/main.sh\")"_s);
        table.row("shell's own", u"act"_s, u"$HOME `id` \\ , \n \"; id; \""_s, QString());
        table.row("odd path", u"a\"b $HOME `id` \\ x=y"_s, u"v"_s, QString());
    }
    void terminal()
    {
        const auto [title, value, line] = Table<QString, QString, QString>::current();
        QString told;
        QString shown;
        setActionTerminal([&](const QString &commandLine, const QString &shownLine, const QString &) {
            told = commandLine;
            shown = shownLine;
        });
        const auto item = m_bench->action(title, needsToken + R"(,"open_in_terminal":true})", "main.sh",
            "#!/bin/sh\nprintf '<%s>' \"$V\" \"$TOKEN\"\n");
        item->performAction({{u"V"_s, value}});
        QTRY_COMPARE(m_bench->console.states, QStringList({title, u""_s}));
        QVERIFY2(line.isEmpty() || shown == line.arg(m_bench->path()), qPrintable(shown));
        QCOMPARE(QString(told).replace(token, u"…"_s), shown);
        QCOMPARE(runToEnd(Shell::create(), {u"sh"_s, u"-c"_s, withoutLiteralEscapes(told)}).output,
            QByteArray('<' + value.toUtf8() + "><" + token.toUtf8() + '>'));
    }

private:
    std::unique_ptr<ActionBench> m_bench;
};

QTEST_MAIN(TestActionRuns)
#include "tst_action_runs.moc"
