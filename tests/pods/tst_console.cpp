// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/DisplayText.h"
#include "platform/text/TerminalText.h"
#include "platform/threads/MainQueue.h"
#include "pods/console/ConsoleText.h"
#include "pods/console/ConsoleTextView.h"
#include "pods/console/ConsoleViewController.h"
#include "resources/widgets/NamedImages.h"
#include "support/Patience.h"
#include "support/StubWindow.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenu>
#include <QProcess>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTimer>
#include <QToolButton>

#include <malloc.h>
#include <thread>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

using TextPairs = QList<std::pair<QString, QString>>;

/// A console in a window of its own, which is the main one.
struct Bench
{
    Bench()
    {
        console.setKubeSplitViewController(&window);
        setMainConsoleLookup([this] { return &console; });
        console.view()->resize(700, 300);
        console.view()->show();
    }
    ~Bench() { setMainConsoleLookup({}); }

    QString text() const { return view().toPlainText(); }
    QLineEdit &field() const { return *console.commandEntryTextField(); }
    ConsoleTextView &view() const { return *console.consoleTextView(); }
    QScrollBar &bar() const { return *view().verticalScrollBar(); }
    bool isAtEnd() const { return bar().value() == bar().maximum(); }

    void add(
        const QString &command, const QString &response = {}, const std::optional<ConsoleError> &error = {})
    {
        const int blocks = view().blockCount();
        console.addEntry(command, response, error);
        QTRY_VERIFY(view().blockCount() > blocks);
    }
    void type(const QString &line)
    {
        field().setText(line);
        QTest::keyClick(&field(), Qt::Key_Return);
    }
    /// Where the document shows a text.
    QTextCursor find(const QString &shown) const { return view().document()->find(shown); }
    QPoint placeOf(const QString &shown) const
    {
        QTextCursor cursor = find(shown);
        cursor.setPosition(cursor.selectionStart() + 1);
        return view().cursorRect(cursor).center();
    }
    /// The title's action in the menu of the place.
    void choose(const QPoint &place, const QString &title, bool expectEnabled = true) const
    {
        const std::unique_ptr<QMenu> menu(view().makeMenu(place));
        for (QAction *action : menu->actions()) {
            if (action->text() == title) {
                QCOMPARE(action->isEnabled(), expectEnabled);
                action->trigger();
                return;
            }
        }
        QFAIL(qPrintable(title));
    }

    test::StubWindow window;
    ConsoleViewController console;
};

} // namespace

class TestConsole : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { mainQueue(); }

    void entriesReadAsTold()
    {
        Bench bench;
        bench.console.addEntry(
            u"kubectl get po -nteam"_s, u"NAME\nweb see http://a.io/x (y)\n"_s, makeConsoleError(u"oh no"_s));
        QCOMPARE(bench.text(), QString()); // shown from the event loop
        QCOMPARE(bench.console.entries().size(), 1);
        QTRY_VERIFY(!bench.text().isEmpty());
        const QString date = bench.text().left(19);
        QVERIFY(qAbs(QDateTime::fromString(date + u'Z', u"yyyy-MM-dd HH:mm:sst"_s)
                         .secsTo(QDateTime::currentDateTimeUtc()))
            < 60);
        QCOMPARE(bench.text().mid(19),
            u"\uE0B0 kubectl get po -nteam\nNAME\nweb see http://a.io/x (y)\n\noh no\n"_s);
        const QList<std::tuple<QString, QString, QString>> colours{{date, u"base2"_s, u"blue"_s},
            {u"\uE0B0"_s, u"blue"_s, u"base03"_s}, {u"kubectl"_s, u"base2"_s, u"base03"_s},
            {u"http://a.io/x"_s, u"blue"_s, u"base03"_s}, {u"(y)"_s, u"base2"_s, u"base03"_s},
            {u"oh no"_s, u"red"_s, u"base03"_s}};
        for (const auto &[shown, foreground, background] : colours) {
            const QTextCharFormat format = bench.find(shown).charFormat();
            QCOMPARE(format.foreground().color(), namedColour(u"solarized-"_s + foreground));
            QCOMPARE(format.background().color(), namedColour(u"solarized-"_s + background));
            QCOMPARE(
                format.underlineStyle() == QTextCharFormat::SingleUnderline, shown.startsWith(u"http"_s));
        }
        QCOMPARE(console_text::logDate(QDateTime::fromString(u"2024-01-05T12:11:12+02:00"_s, Qt::ISODate)),
            u"2024-01-05 10:11:12"_s);
    }

    void controlsAreNotShown()
    {
        const TextPairs cases{{u"\u001b[1;31mred\u001b[0m \u001b[38:2::1:2:3mx\u009b0m"_s, u"red x"_s},
            {u"\u001b]0;title\a-\u001b]8;;http://x\u001b\\y\u001b]8;;\u001b\\"_s, u"-y"_s},
            {u"\u001b]0;kept\nline\a"_s, u"0;kept\nline"_s}, // a string without an end hides nothing
            {u"\u001b(Ba\u001b=b\u001b7c\u001bM"_s, u"abc"_s}, {u"a\u001b[12;3"_s, u"a"_s},
            {u"a\u001b"_s, u"a"_s}, {u"a\r\nb\rc\fd\u2028e\u2029f\n"_s, u"a\nb\nc\nd\ne\nf\n"_s},
            {u"N\bNA\bAM\bM\n\bx"_s, u"NAM\nx"_s},
            {u"a\tb\u0001\u007f\u0085\u202ec\ufdd0\ufffc\0"_s, u"a\tb\nc\ufffd\ufffd"_s}};
        Bench bench;
        for (const auto &[text, shown] : cases) {
            QCOMPARE(terminal_text::withoutControls(text), shown);
            bench.add(u"x"_s, text);
        }
        // A document would break entries at characters of its own otherwise.
        QCOMPARE(bench.view().blockCount(), cases.size() + 1);
    }

    void typedCommandsRun()
    {
        const QList<std::pair<QString, QStringList>> cases{
            {u"get po \"my pod\" -o wide"_s, {u"get"_s, u"po"_s, u"my pod"_s, u"-o"_s, u"wide"_s}},
            {u"a \"b c"_s, {u"a"_s, u"b"_s, u"c"_s}}, {u"a=\"b c\"d"_s, {u"a="_s, u"b c"_s, u"d"_s}},
            {u"  x \"\" \u00a0y\n'z' "_s, {u"x"_s, u"y"_s, u"'z'"_s}}};
        Bench bench;
        bench.window.facade.configPath = u"/k/c"_s;
        for (const auto &[line, words] : cases) {
            const QString start = u"%1 environment KUBECONFIG arguments "_s.arg(test::fakeToolPath());
            const size_t before = bench.console.entries().size();
            bench.type(start + line);
            QCOMPARE(bench.field().text(), QString());
            QTRY_COMPARE(bench.console.entries().size(), before + 1);
            const ConsoleEntry &entry = bench.console.entries().back();
            QCOMPARE(entry.command, start + words.join(u' '));
            QCOMPARE(entry.response, u"/k/c\"%1\"\n"_s.arg(words.join(u"\"\n\""_s)));
        }
    }

    void someLinesRunNothing()
    {
        Bench bench;
        bench.window.context = bench.window.nameSpace = u"c"_s;
        bench.window.obstacle = u"not now"_s;
        for (const QString &line : {u" \t "_s, u"\"\""_s, u"kubectl delete pod x"_s}) {
            bench.type(line);
        }
        QCOMPARE(bench.window.settledAsked, 1); // a refused command goes back into the field
        QCOMPARE(bench.field().text(), u"kubectl delete pod x"_s);
        bench.window.whenAsked = [&bench] { bench.field().setText(u"touch /never"_s); };
        bench.type(u"kubectl get po"_s); // or into the history, when something else was typed meanwhile
        QCOMPARE(bench.console.entries().size(), 2U);
        QCOMPARE(bench.console.entries().back().command, u"kubectl get po"_s);
        QTRY_VERIFY(bench.text().endsWith(u"The command was not run: not now\n"_s));
        QCOMPARE(bench.field().text(), u"touch /never"_s);
        bench.window.obstacle.clear();
        bench.window.whenAsked = {};
        bench.console.view()->activateWindow();
        bench.field().setFocus();
        QTRY_VERIFY(bench.field().hasFocus());
        bench.view().setFocus();
        QVERIFY(!bench.field().hasFocus());
        bench.type(u"no-such-program-here"_s); // an entry that comes after all others
        QTRY_COMPARE(bench.console.entries().size(), 3);
        QTRY_VERIFY(bench.text().contains(u"No such file"_s));
        QVERIFY(bench.console.entries().back().response.isEmpty());
        bench.type(QString(200'000, u'x'));
        QTRY_COMPARE(bench.console.entries().size(), 4);
        QTRY_VERIFY(bench.text().endsWith(u"Unexpected error: Argument list too long.\n"_s));
    }

    void whatSaysItselfWhereItGoesNeedsNoSettledWindow()
    {
        Bench bench;
        bench.window.context = bench.window.nameSpace = u"c"_s;
        bench.window.obstacle = u"not now"_s;
        size_t entries = 0; // each has run, or was refused
        for (const auto &[line, asked] : {std::pair(u"kubectl config view"_s, 0),
                 {u"kubectl get po --context=b"_s, 0}, {u"kubectl get po --kubeconfig f"_s, 0},
                 {u"kubectl exec x -- y --context z"_s, 1}, {u"sh -c \"kubectl delete po x\""_s, 2}}) {
            bench.type(line);
            QCOMPARE(bench.window.settledAsked, asked);
            ++entries;
            QTRY_COMPARE(bench.console.entries().size(), entries);
        }
    }

    void theHistoryIsWalked()
    {
        Bench bench;
        const auto press = [&bench](Qt::Key key, int times = 1) {
            for (int i = 0; i < times; ++i) {
                QTest::keyClick(&bench.field(), key);
            }
            return QPair(bench.field().text(), bench.console.commandHistoryCursor());
        };
        const auto at = [](const char *text, int cursor) { return QPair(QString::fromLatin1(text), cursor); };
        bench.field().setText(u"typing"_s);
        QCOMPARE(press(Qt::Key_Up), at("typing", 0));
        const QString last(40'000, u'c');
        for (const QString &command : {u"a"_s, u"b"_s, last}) {
            bench.add(command);
        }
        bench.console.clearLogs();
        QCOMPARE(bench.text(), QString());
        QCOMPARE(press(Qt::Key_Down), at("typing", 0));
        QCOMPARE(press(Qt::Key_Up), QPair(last, 1));
        QCOMPARE(bench.field().cursorPosition(), last.size());
        QCOMPARE(press(Qt::Key_Up, 3), at("a", 3));
        QCOMPARE(press(Qt::Key_Down), at("b", 2));
        QCOMPARE(press(Qt::Key_Down, 2), at("typing", 0));
        QCOMPARE(bench.console.lastCommand(), u"typing"_s);
        press(Qt::Key_Up, 2);
        bench.type(u"true"_s);
        QCOMPARE(bench.console.commandHistoryCursor(), 0);
        QTRY_COMPARE(bench.console.entries().size(), 4);
    }

    void runningScriptsAreNamed()
    {
        Bench bench;
        const QSignalSpy changes(&bench.console, &ConsoleViewController::isScriptRunningChanged);
        const QList<std::pair<QString, QString>> steps{{u"A"_s, u"Running: A"_s}, {u"B"_s, u"Running: B"_s},
            {u"-B"_s, u"Running: A"_s}, {u"-A"_s, QString()}};
        const int width = bench.field().width();
        for (const auto &[step, text] : steps) {
            step.startsWith(u'-') ? bench.console.end(step.mid(1)) : bench.console.begin(step);
            QTRY_COMPARE(bench.console.property("scriptRunningText").toString(), text);
            QCOMPARE(bench.console.isScriptRunning(), !text.isEmpty());
            QCOMPARE(bench.field().width(), width);
        }
        QCOMPARE(changes.count(), 2);
    }

    void endlessCommandsEndByHandOrWithTheConsole()
    {
        QTemporaryDir folder;
        auto bench = std::make_unique<Bench>();
        const QString hang = u"%1 out so-far pidfile %2 hang"_s.arg(test::fakeToolPath(), folder.path());
        auto *stop = bench->console.view()->findChild<QToolButton *>();
        QVERIFY(stop->isHidden());
        bench->type(hang);
        QTRY_COMPARE(test::pidsIn(folder.path()).size(), 1);
        QTest::mouseClick(stop, Qt::LeftButton);
        QTRY_VERIFY(bench->text().contains(u"so-far\nThe command was stopped"_s));
        QTRY_VERIFY(stop->isHidden());
        bench->type(hang);
        QTRY_COMPARE(test::pidsIn(folder.path()).size(), 2);
        bench->type(u"%1 fill 99999999999"_s.arg(test::fakeToolPath()));
        QTRY_VERIFY(bench->text().contains(u"The command was ended: it printed more than 64 MiB."_s));
        bench.reset();
        for (const qint64 pid : test::pidsIn(folder.path())) {
            QTRY_VERIFY(!test::isAlive(pid));
        }
    }

    void linksOpenInTheBrowserOnly()
    {
        Bench bench;
        const QSignalSpy opened(&bench.console, &ConsoleViewController::linkOpened);
        const TextPairs links{{u"http://a.io/x"_s, u"http://a.io/x"_s}, {u"FTP://b.io"_s, u"ftp://b.io"_s},
            {u"www.c.io/y"_s, u"https://www.c.io/y"_s}, {u"javascript.d/z"_s, u"https://javascript.d/z"_s}};
        for (const auto &[shown, target] : links) {
            bench.add(u"x"_s, shown);
            QTest::mouseMove(bench.view().viewport(), bench.placeOf(shown));
            QTRY_COMPARE(bench.view().viewport()->cursor().shape(), Qt::PointingHandCursor);
            QTest::mouseClick(bench.view().viewport(), Qt::LeftButton, {}, bench.placeOf(shown));
            QTest::keyClick(&bench.view(), Qt::Key_Return);
            bench.choose(bench.placeOf(shown), u"Open Link"_s);
            QCOMPARE(opened.count() % 3, 0);
            QCOMPARE(opened.last().first().toUrl(), QUrl(target));
        }
        QCOMPARE(opened.count(), 12);
        for (const QString &bad : {u"http://"_s, u"https://:80/"_s, u"ftp:///etc"_s, u"http://[x"_s}) {
            QCOMPARE(console_text::linkTarget(bad), QUrl());
        }
    }

    void entriesAreCopied()
    {
        Bench bench;
        const CommandLine line{{u"kubectl"_s, u"get"_s, u"my pod"_s}, u"/k/it's"_s};
        bench.console.addCommandEntry(
            line, u"kubectl get my pod"_s, QString(5000, u'y'), makeConsoleError(u"oh"_s));
        bench.add(u"last"_s);
        bench.bar().setValue(0);
        const QPoint first = bench.placeOf(u"kubectl"_s);
        bench.choose(first, u"Copy as Shell Command"_s);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"KUBECONFIG='/k/it'\\''s' kubectl get 'my pod'"_s);
        bench.choose(first, u"Copy Entry"_s);
        QCOMPARE(
            QGuiApplication::clipboard()->text(), u"kubectl get my pod\n%1\noh"_s.arg(QString(5000, u'y')));
        bench.view().selectAll();
        bench.view().copy();
        QVERIFY(QGuiApplication::clipboard()->text().contains(
            QRegularExpression(u"^....-..-.. ..:..:.. kubectl get my pod\n"_s)));
        bench.console.clearLogs();
        bench.add(u"not known how it ran"_s);
        bench.choose(bench.placeOf(u"known"_s), u"Copy as Shell Command"_s, false);
        bench.console.clearLogs();
        bench.console.addCommandEntry({{u"kubectl"_s, u"x\u0003rm"_s}, {}}, u"a key"_s, {}, {});
        bench.add(u"last"_s);
        bench.choose(bench.placeOf(u"key"_s), u"Copy as Shell Command"_s);
        QVERIFY(!QGuiApplication::clipboard()->text().contains(u'\u0003')); // Ctrl+C where it is pasted
    }

    void shellLinesComeBackAsTheArguments()
    {
        const QString tool = test::fakeToolPath();
        const QList<QStringList> cases{
            {tool, u"arguments"_s, u"a b"_s, u"it's"_s, u"\"q\""_s, QString(), u" "_s, u"'"_s, u"-n=x"_s},
            {tool, u"arguments"_s, u"$HOME"_s, u"`id`"_s, u"a;b|c&d"_s, u"*"_s, u"~"_s, u"#x"_s, u"!!"_s,
                u"{a,b}"_s, u"<x>"_s, u"\\"_s, u"(x)"_s, u"zwei\nZeilen"_s, u"tab\there"_s, u"ü€😀"_s},
            {u"A=b c"_s, tool, u"environment"_s, u"A"_s}, {u"if"_s}};
        for (const QStringList &arguments : cases) {
            QProcess direct;
            direct.start(u"/usr/bin/env"_s, arguments);
            QProcess pasted;
            pasted.start(u"/bin/sh"_s, {u"-c"_s, CommandLine{arguments, u"/k"_s}.shellLine()});
            QVERIFY(direct.waitForFinished() && pasted.waitForFinished());
            QCOMPARE(pasted.readAllStandardOutput(), direct.readAllStandardOutput());
            QCOMPARE(pasted.exitCode(), direct.exitCode());
        }
    }

    void theViewFollowsOnlyFromTheEnd()
    {
        Bench bench;
        const QString lines = u"line\n"_s.repeated(30);
        bench.add(u"one"_s, lines);
        QVERIFY(bench.bar().maximum() > 0 && bench.isAtEnd());
        bench.console.view()->resize(300, 150);
        QTRY_VERIFY(bench.isAtEnd());
        bench.view().selectAll();
        const QString selected = bench.view().textCursor().selectedText();
        bench.add(u"two"_s, lines);
        QTRY_VERIFY(bench.isAtEnd());
        QCOMPARE(bench.view().textCursor().selectedText(), selected);
        bench.bar().setValue(bench.bar().maximum() / 2);
        const int top = bench.view().cursorForPosition({20, 5}).position();
        bench.add(u"three"_s, lines);
        QVERIFY(!bench.isAtEnd());
        QCOMPARE(bench.view().cursorForPosition({20, 5}).position(), top);
        // With room for everything the end is in sight, wherever the user was before.
        bench.bar().setValue(0);
        bench.console.view()->resize(300, 4000);
        QTRY_COMPARE(bench.bar().maximum(), 0);
        bench.add(u"four"_s, u"line\n"_s.repeated(400));
        QTRY_VERIFY(bench.bar().maximum() > 0 && bench.isAtEnd());
    }

    void floodsDoNotStopTheWindow()
    {
        Bench bench;
        constexpr int entries = 3000;
        const QString response = u"web-5d4f-abc 1/1 Running http://a.io/ 3d\n"_s.repeated(80).left(3000);
        const auto timeOf = [&](int count) { // of the main thread
            const double start = test::threadTime();
            for (int i = 0; i < count; ++i) {
                bench.add(u"kubectl get po"_s, response);
                bench.view().viewport()->repaint();
            }
            return test::threadTime() - start;
        };
        timeOf(20);
        const double early = timeOf(100);
        for (int i = 120; i < entries; ++i) {
            bench.console.addEntry(u"kubectl get po"_s, response, std::nullopt);
        }
        // Between the pieces of the flood the window does other things.
        int beats = 0;
        QTimer pulse;
        connect(&pulse, &QTimer::timeout, this, [&beats] { ++beats; });
        pulse.start(0);
        QTRY_COMPARE_WITH_TIMEOUT(bench.view().blockCount(), entries + 1, 60'000);
        pulse.stop();
        QVERIFY(beats > 20);
        const size_t allocated = mallinfo2().uordblks;
        QVERIFY(timeOf(100) < 8 * early);
        // Formats and lines stay; the glyphs of what has been painted, many times as much, must not.
        const double perEntry = double(mallinfo2().uordblks - allocated) / 100;
        QVERIFY2(test::sanitized || perEntry < 12'000, qPrintable(QString::number(perEntry)));
        QTRY_VERIFY(bench.isAtEnd());
        bench.console.clearLogs();
        bench.type(u"%1 fill 50000000"_s.arg(test::fakeToolPath()));
        QTRY_COMPARE_WITH_TIMEOUT(bench.console.entries().size(), entries + 101, 60'000);
        QCOMPARE(bench.console.entries().back().response.size(), 50'000'000);
        QTRY_VERIFY(bench.text().endsWith(u"…\n"_s) && bench.text().size() < 4000);
    }
};

QTEST_MAIN(TestConsole)
#include "tst_console.moc"
