// SPDX-License-Identifier: GPL-3.0-or-later
#include "external/InstalledApplications.h"
#include "external/Terminal.h"
#include "external/TerminalQuoting.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"
#include "support/Patience.h"
#include "support/TestFolder.h"
#include "support/TestSupport.h"

#include <QComboBox>
#include <QDir>
#include <QTest>

#include <csignal>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

// Writes down its name and what stands before the command, then is the window that runs the command.
constexpr auto workingTerminal = R"(#!/bin/sh
printf '%s' "${0##*/}" > "$TERMINAL_RECORD/terminal"
while [ "$1" != /bin/sh ]; do printf ' %s' "$1" >> "$TERMINAL_RECORD/terminal"; shift; done
exec "$@" > "$TERMINAL_RECORD/shown"
)";
// What the command line starts: writes down the values that it got.
constexpr auto recorder = R"(#!/bin/sh
printf '%s' "$A" > "$TERMINAL_RECORD/A"; printf '%s' "$B" > "$TERMINAL_RECORD/B"
grep -acF 'odd name; $(touch hit)=' /proc/$$/environ > "$TERMINAL_RECORD/odd"
)";

} // namespace

class TestTerminal : public QObject, private TestFolder
{
    Q_OBJECT
private:
    UserDefaults m_settings{path(u"settings.json"_s)};
    RecordingConsole m_console;

    QString recorded(const QString &name) const
    {
        return has(u"record/"_s + name) ? QString::fromUtf8(read(u"record/"_s + name)) : u"(nothing)"_s;
    }
    /// The one console entry of a launch.
    QString entryOf(const QString &commandLine, const QString &shown = {})
    {
        m_console.entries.clear();
        auto run = inBackground(
            [=] { return runInTerminal(commandLine, shown.isNull() ? commandLine : shown), true; });
        if (!arrives(run) || !QTest::qWaitFor([this] { return !m_console.entries.isEmpty(); })) {
            return u"(no entry)"_s;
        }
        QCoreApplication::processEvents();
        return m_console.entries.join(u" AND "_s);
    }

private Q_SLOTS:
    void initTestCase()
    {
        mainQueue();
        setMainConsoleLookup([this] { return &m_console; });
        setUserDefaultsForTesting(&m_settings);
        for (const auto &[name, folder] : {std::pair("XDG_DATA_HOME", "data"), {"XDG_DATA_DIRS", "share"},
                 {"XDG_CONFIG_HOME", "config"}, {"XDG_CONFIG_DIRS", "etc"}, {"PATH", "bin"},
                 {"TERMINAL_RECORD", "record"}, {"SHELL", "bin/usershell"}}) {
            qputenv(name, path(QLatin1String(folder)).toLocal8Bit());
        }
        for (const QString &tool : {u"env"_s, u"setsid"_s, u"sleep"_s, u"grep"_s, u"touch"_s}) {
            QVERIFY(
                QDir().mkpath(path(u"bin"_s)) && QFile::link(u"/usr/bin/"_s + tool, path(u"bin/"_s + tool)));
        }
        write(u"bin/usershell"_s, "#!/bin/sh\ntouch \"$TERMINAL_RECORD/shell\"\n");
    }
    void cleanupTestCase()
    {
        setMainConsoleLookup({});
        setUserDefaultsForTesting(nullptr);
    }
    void init()
    {
        QDir(path(u"record"_s)).removeRecursively();
        QVERIFY(QDir().mkpath(path(u"record"_s)));
        m_settings.set(u"preferredTerminal"_s, u"Terminal"_s);
    }

    void escaping_data()
    {
        QTest::addColumn<QString>("escaped");
        QTest::newRow("say \"hi\"") << u"say \\\\\\\"hi\\\\\\\""_s;
        QTest::newRow("a,b") << u"\"a,b\""_s;
        QTest::newRow("a\nb") << u"\"a\nb\""_s;
        QTest::newRow("\",\"") << u"\"\\\\\\\",\\\\\\\"\""_s;
        QTest::newRow("a\\b $c `d` 'e'") << u"a\\b $c `d` 'e'"_s;
        QTest::newRow("") << QString();
    }
    void escaping() { QTEST(escapeString(QString::fromUtf8(QTest::currentDataTag())), "escaped"); }

    void valuesReachTheProgram_data()
    {
        QTest::addColumn<QString>("value");
        for (const auto &value : {u""_s, u"plain"_s, u"two  blanks "_s, u"say \"hi\""_s, u"a,b"_s,
                 u", x; y"_s, u"line\nfeed; touch $TERMINAL_RECORD/hit"_s, u"\",\""_s, u"\"\n\""_s,
                 u"C:\\new\\table\\"_s, u"\\\\\\"_s, u"\\\"; touch $TERMINAL_RECORD/hit; \\\""_s,
                 u"$HOME ${A} $((1+1))"_s, u"$(touch $TERMINAL_RECORD/hit)"_s,
                 u"`touch $TERMINAL_RECORD/hit`"_s, u"\\$HOME \\`x\\` \\,"_s, u"it's 'quoted'"_s,
                 u"\t\r*?[a-z]~!#&|<>(){}"_s, u"größe 你好 😀"_s, u"\""_s, u"\\"_s, u","_s}) {
            QTest::addRow("%s", qPrintable(value)) << value;
        }
    }
    void valuesReachTheProgram()
    {
        QFETCH(QString, value);
        write(u"bin/x-terminal-emulator"_s, workingTerminal);
        const QString script = u"odd `folder` \"$,\\/run \\\" it"_s;
        write(script, recorder);
        const QString line = u"env "_s + terminalAssignment(u"A"_s, value) + u' '
            + terminalAssignment(u"odd name; $(touch hit)"_s, value) + u' '
            + terminalAssignment(u"B"_s, value) + u' ' + terminalArgument(path(script));
        QCOMPARE(entryOf(line), line + u"||{}");
        QTRY_VERIFY(recorded(u"shell"_s).isEmpty()); // the user's shell took over
        QCOMPARE(recorded(u"A"_s), value);
        QCOMPARE(recorded(u"B"_s), value);
        QCOMPARE(recorded(u"odd"_s), u"1\n"_s);
        QCOMPARE(recorded(u"hit"_s), u"(nothing)"_s);
        QCOMPARE(recorded(u"shown"_s), u"\nThat has ended. You are on your own machine again.\n"_s);
    }

    void terminalsInOrder()
    {
        const QStringList inOrder{u"xdg-terminal-exec"_s, u"x-terminal-emulator -e"_s,
            u"gnome-terminal --window --"_s, u"konsole -e"_s, u"xfce4-terminal -x"_s, u"kitty"_s,
            u"alacritty -e"_s, u"foot"_s, u"xterm -e"_s};
        for (const QString &terminal : inOrder) {
            write(u"bin/"_s + terminal.section(u' ', 0, 0), workingTerminal);
        }
        m_settings.set(u"preferredTerminal"_s, u"iterm"_s); // unknown: the same as "Terminal"
        for (const QString &terminal : inOrder) {
            const CapturedOutput diagnostics;
            QCOMPARE(entryOf(u"exit 7"_s, u"exit \\\"…\\\""_s), u"exit \\\"…\\\"||{}"_s);
            QVERIFY2(diagnostics.text().endsWith(u" sh 'exit \"…\"'\n"_s), qPrintable(diagnostics.text()));
            QTRY_VERIFY(recorded(u"shell"_s).isEmpty());
            QCOMPARE(recorded(u"terminal"_s), terminal);
            init();
            QVERIFY(remove(u"bin/"_s + terminal.section(u' ', 0, 0)));
        }
        QVERIFY2(entryOf(u"ls"_s).startsWith(u"ls||No terminal was found."),
            qPrintable(m_console.entries.join(u' ')));
    }

    void failures()
    {
        for (const auto &[terminal, error] : {std::pair("echo 'cannot open display' >&2; exit 3\n"_ba,
                                                  u"failed with exit status 3.\ncannot open display"_s),
                 {"kill -9 $$\n"_ba, u"failed with exit status 9.\n"_s}}) {
            write(u"bin/xterm"_s, "#!/bin/sh\n" + terminal);
            const QString entry = entryOf(u"ls"_s);
            QVERIFY2(entry.startsWith(u"ls||%1 %2"_s.arg(path(u"bin/xterm"_s), error)), qPrintable(entry));
        }
        write(u"bin/xterm"_s, workingTerminal);
        QVERIFY(entryOf(u"NUL "_s + QChar(u'\0')).contains(u"could not be started: "_s));
        QVERIFY(entryOf(QString(200'000, u'x')).contains(u"Argument list too long"_s));
    }

    void aWindowOutlivesTheApplication()
    {
        write(u"bin/xterm"_s, workingTerminal);
        QCOMPARE(entryOf(u"echo $$ > $TERMINAL_RECORD/pid; exec sleep 600"_s).right(4), u"||{}"_s);
        ProcessKeeper::instance().endAll(std::chrono::milliseconds(50));
        const auto pid = recorded(u"pid"_s).toInt();
        QVERIFY(isAlive(pid)); // the entry did not wait for its end
        ::kill(pid, SIGTERM);
        QTRY_VERIFY(recorded(u"shell"_s).isEmpty());
    }

    void applications()
    {
        m_settings.remove(u"preferredTerminal"_s);
        QCOMPARE(resolvePreferredTerminal(), u"Terminal");
        const auto scanned = [] {
            QComboBox terminals;
            QComboBox editors;
            QStringList titles;
            scanInstalledApplications(terminals, editors);
            scanInstalledApplications(terminals, editors);
            for (const QComboBox *list : {&terminals, &editors}) {
                for (int i = 0; i < list->count(); ++i) {
                    titles.append(list->itemText(i));
                }
            }
            return titles.join(u'|');
        };
        QCOMPARE(scanned(), QString());
        m_settings.set(u"preferredTerminal"_s, u"iTerm"_s);
        QVERIFY(entryOf(u"ls"_s).startsWith(u"ls||iTerm was not found"_s));

        write(u"bin/shiny"_s, workingTerminal);
        const QByteArray entry
            = "[Desktop Entry]\nType=Application\nName=x\nExec=" + path(u"bin/shiny"_s).toUtf8();
        for (const auto &id : {u"emacs"_s, u"code"_s, u"org.kde.kate"_s, u"Atom"_s, u"sublime_text_3"_s}) {
            write(u"share/applications/"_s + id + u".desktop"_s, entry + '\n');
        }
        write(u"share/applications/gvim.desktop"_s, entry + "\nHidden=true\n");
        write(u"share/applications/atom.desktop"_s, entry + "-that-was-removed\n");
        write(u"data/applications/shiny.desktop"_s,
            entry + " --new %U\nX-TerminalArgExec=--run\nMimeType=x-scheme-handler/iterm2;\n");
        write(u"config/mimeapps.list"_s,
            "[Default Applications]\nx-scheme-handler/iterm2=shiny.desktop\n"
            "[Added Associations]\nx-scheme-handler/iterm2=shiny.desktop;\n");
        QTRY_COMPARE(scanned(), u"iTerm|Visual Studio Code|Kate|Emacs"_s);
        QCOMPARE(entryOf(u"ls > /dev/null"_s), u"ls > /dev/null||{}"_s);
        QTRY_COMPARE(recorded(u"terminal"_s), u"shiny --new --run"_s);
        m_settings.remove(u"preferredTerminal"_s);
        QCOMPARE(resolvePreferredTerminal(), u"iTerm");
        m_settings.set(u"preferredTerminal"_s, u"Whatever"_s);
        QCOMPARE(resolvePreferredTerminal(), u"Whatever");
    }
};

QTEST_MAIN(TestTerminal)
#include "tst_terminal.moc"
