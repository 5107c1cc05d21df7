// SPDX-License-Identifier: GPL-3.0-or-later
// The text of a log window against plain models of it: what is kept, where lines begin, what is shown.
#include "platform/process/ProcessSetup.h"
#include "platform/threads/MainQueue.h"
#include "pods/logs/streams/LogIntake.h"
#include "pods/logs/text/LogDocument.h"
#include "pods/logs/text/LogLineText.h"
#include "pods/logs/text/LogSearch.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBoundaryFinder>

#include <random>
#include <semaphore>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace tidewright;
using namespace tidewright::test;
using namespace Qt::StringLiterals;

namespace {

struct Piece
{
    int source;
    QByteArray text;
};

QList<Piece> randomPieces(std::mt19937 &random, int count)
{
    static const QByteArrayList words{"\n", "\r\n", "\r", "ab", "error", QByteArray(1, '\0'), "\x1b[31m",
        "äé€", "👩‍👩‍👧", "e\u0301", "שלום", "\n\n", QByteArray(90, 'x'), "\xff", "\xe2\x82",
        "\xa4"};
    QList<Piece> pieces;
    for (int i = 0; i < count; ++i) {
        QByteArray text;
        for (auto n = random() % 12; n > 0; --n) {
            text += words[qsizetype(random() % std::size_t(words.size()))];
        }
        pieces.append({int(random() % 4), text});
    }
    return pieces;
}

/// Where lines begin in a text without long ones, found the slow way.
std::vector<qint64> naiveStarts(const QByteArray &text)
{
    std::vector<qint64> starts;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char before = i > 0 ? text[i - 1] : '\n';
        if (before == '\n' || (before == '\r' && text[i] != '\n')) {
            starts.push_back(i);
        }
    }
    return starts;
}

QByteArrayList linesOf(const QByteArray &text)
{
    QByteArrayList lines;
    const std::vector<qint64> starts = naiveStarts(text);
    for (std::size_t i = 0; i < starts.size(); ++i) {
        const qint64 end = i + 1 < starts.size() ? starts[i + 1] : text.size();
        lines.append(text.mid(starts[i], end - starts[i]));
    }
    return lines;
}

QByteArray shownBytes(const LogDocument &document)
{
    return document.bytes().read(document.shown().ranges(0, document.shown().size()));
}

std::vector<qint64> shownStarts(const LogProjection &shown)
{
    std::vector<qint64> starts;
    for (qint64 line = 0; line < shown.lineCount(); ++line) {
        starts.push_back(shown.lineStart(line));
    }
    return starts;
}

QString described(const LogLineText &line)
{
    QString result;
    for (std::size_t i = 0; i < line.runs.size(); ++i) {
        const qsizetype end = i + 1 < line.runs.size() ? line.runs[i + 1].start : line.text.size();
        const LogLook &look = line.runs[i].look;
        QString mark = (look.foreground ? QString::number(*look.foreground & 0xFFFFFF, 16) : QString())
            + (look.background ? u'/' + QString::number(*look.background & 0xFFFFFF, 16) : QString())
            + u"%1%2%3"_s.arg(look.bold ? u"b"_s : QString(), look.underlined ? u"u"_s : QString(),
                look.inverse ? u"i"_s : QString());
        result += (mark.isEmpty() ? QString() : u'<' + mark + u'>')
            + line.text.mid(line.runs[i].start, end - line.runs[i].start);
    }
    return result;
}

} // namespace

class TestLogDocument : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        mainQueue();
        settleSignals();
        QVERIFY(m_folder.isValid());
    }

    void ascendingListIsAList()
    {
        std::mt19937 random(1);
        AscendingList list;
        std::vector<qint64> model;
        qint64 value = 0;
        for (int i = 0; i < 5000; ++i) {
            value += qint64(random() % (i % 7 == 0 ? 3'000'000'000U : i % 3 == 0 ? 2U : 200U));
            list.append(value);
            model.push_back(value);
        }
        QCOMPARE(list.size(), qint64(model.size()));
        QCOMPARE(list.last(), model.back());
        AscendingList::Cursor cursor(list, 0);
        for (std::size_t i = 0; i < model.size(); ++i, cursor.next()) {
            QCOMPARE(list.at(qint64(i)), model[i]);
            QCOMPARE(cursor.value(), model[i]);
            for (const qint64 probe : {model[i] - 1, model[i], model[i] + 1}) {
                QCOMPARE(list.upperBound(probe),
                    std::upper_bound(model.begin(), model.end(), probe) - model.begin());
            }
        }
        QCOMPARE(AscendingList().upperBound(3), 0);
    }

    void linesBeginWhereverPiecesAreCut()
    {
        std::mt19937 random(2);
        for (int round = 0; round < 60; ++round) {
            QByteArray text;
            for (const Piece &piece : randomPieces(random, 80)) {
                text += piece.text;
            }
            LineSplitter splitter;
            std::vector<qint64> starts;
            for (qsizetype at = 0; at < text.size();) {
                const qsizetype size = qMin<qsizetype>(text.size() - at, 1 + qsizetype(random() % 9));
                splitter.feed(QByteArrayView(text).sliced(at, size), starts);
                at += size;
            }
            QCOMPARE(starts, naiveStarts(text));
            QCOMPARE(splitter.lines(), qint64(starts.size()));
        }
    }

    void longLinesAreCutBetweenCharacters_data()
    {
        QTest::addColumn<QByteArray>("unit");
        QTest::newRow("ASCII") << "x"_ba;
        QTest::newRow("combining") << "e\u0301\u0302"_ba;
        QTest::newRow("wide") << "日本語"_ba;
        QTest::newRow("family") << "👩‍👩‍👧‍👦"_ba;
        QTest::newRow("coloured") << "\x1b[38;2;1;2;3mab\x1b[0mc"_ba;
        QTest::newRow("among bytes that are no text") << "\xff\x80\xe6"
                                                         "e\u0301\u0302"_ba;
    }
    void longLinesAreCutBetweenCharacters()
    {
        QFETCH(QByteArray, unit);
        const QByteArray text = '.' + unit.repeated(5'000'000 / unit.size());
        std::vector<qint64> whole;
        LineSplitter atOnce;
        atOnce.feed(text, whole);
        std::vector<qint64> pieces;
        LineSplitter inPieces;
        std::mt19937 random(3);
        for (qsizetype at = 0; at < text.size();) {
            const qsizetype size = qMin<qsizetype>(text.size() - at, 1 + qsizetype(random() % 70'000));
            inPieces.feed(QByteArrayView(text).sliced(at, size), pieces);
            at += size;
        }
        QCOMPARE(pieces, whole);
        QCOMPARE(inPieces.lines(), 1);
        QVERIFY(qint64(whole.size()) >= text.size() / (LineSplitter::longestLine + 64));
        for (std::size_t i = 1; i < whole.size(); ++i) {
            QVERIFY(whole[i] - whole[i - 1] <= LineSplitter::longestLine + 64);
            // A few units around the cut decide whether it is one between characters.
            const QString before = QString::fromUtf8(text.mid(whole[i] - 60, 60));
            const QString around = before + QString::fromUtf8(text.mid(whole[i], 60));
            QVERIFY(!unit.isValidUtf8() || !before.endsWith(QChar::ReplacementCharacter));
            QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, around);
            finder.setPosition(before.size());
            QVERIFY(finder.isAtBoundary());
            const QByteArray line = text.mid(whole[i - 1], whole[i] - whole[i - 1]);
            QVERIFY(!makeLineText(line, {}).text.contains(u'['));
        }
    }

    void showsWhatAModelShows_data()
    {
        QTest::addColumn<QList<int>>("hidden");
        QTest::addColumn<QString>("filter");
        QTest::newRow("all") << QList<int>{} << QString();
        QTest::newRow("one hidden") << QList<int>{2} << QString();
        QTest::newRow("all hidden") << QList<int>{0, 1, 2, 3} << QString();
        QTest::newRow("filter") << QList<int>{} << u"error"_s;
        QTest::newRow("filter without a match") << QList<int>{} << u"nowhere"_s;
        QTest::newRow("hidden and filter") << QList<int>{0, 3} << u"äé€"_s;
    }
    void showsWhatAModelShows()
    {
        QFETCH(QList<int>, hidden);
        QFETCH(QString, filter);
        std::mt19937 random(4);
        for (int round = 0; round < 20; ++round) {
            LogDocument document({m_folder.path()});
            QByteArray all;
            QByteArray visible;
            const auto narrow = [&] {
                for (const int source : hidden) {
                    document.setSourceHidden(source, true);
                }
                document.setFilter(LogPattern(filter, true, false));
            };
            const QList<Piece> pieces = randomPieces(random, 120);
            for (qsizetype i = 0; i < pieces.size(); ++i) {
                document.append(pieces[i].source, pieces[i].text);
                all += pieces[i].text;
                visible += hidden.contains(pieces[i].source) ? QByteArray() : pieces[i].text;
                if (i == 50) {
                    narrow(); // the rest arrives while that is under way, or later
                } else if (i % 37 == 36) {
                    QCoreApplication::processEvents();
                }
            }
            document.append(9, "end");
            document.finish();
            all += "end";
            visible += "end";
            QByteArray expected;
            for (const QByteArray &line : linesOf(visible)) {
                expected += line.contains(filter.toUtf8()) ? line : QByteArray();
            }
            QTRY_VERIFY(document.size() == all.size() && document.examined() == all.size());
            QCOMPARE(document.bytes().read(0, document.size()), all);
            QCOMPARE(document.lines(), qint64(naiveStarts(all).size()));
            QCOMPARE(shownBytes(document), expected);
            QCOMPARE(shownStarts(document.shown()), naiveStarts(expected));
            QCOMPARE(document.shownLines(), document.shown().lineCount());
            // From places to positions and back.
            for (qint64 place = 0; place < expected.size(); ++place) {
                const qint64 position = document.shown().position(place);
                QCOMPARE(document.bytes().at(position), expected[place]);
                QCOMPARE(document.shown().place(position), place);
            }
            qint64 at = 0;
            for (const Piece &piece : pieces) {
                if (const qsizetype size = piece.text.size()) {
                    const auto runs = document.runs({at, size});
                    QCOMPARE(qsizetype(runs.size()), 1);
                    QCOMPARE(runs[0].source, piece.source);
                    at += size;
                }
            }
        }
    }

    /// A flood waits where it comes from while nobody takes what is there, and goes on in order then.
    void aFullIntakeHoldsItsSourcesBack()
    {
        constexpr int pieces = 1000;
        const QByteArray piece(100'000, 'x');
        std::binary_semaphore wake(0);
        LogIntake intake([&wake] { wake.release(); });
        std::jthread source([&] {
            for (int i = 0; i < pieces; ++i) {
                intake.put({.source = i, .bytes = piece});
            }
        });
        const auto letGo = qScopeGuard([&intake] { intake.close(); });
        int next = 0;
        while (next < pieces && wake.try_acquire_for(deadline)) {
            qsizetype waiting = 0;
            for (const LogIntake::Piece &taken : intake.take()) {
                waiting += taken.bytes.size();
                QCOMPARE(taken.source, next++);
            }
            QVERIFY(waiting < LogIntake::mostWaiting + piece.size());
        }
        QCOMPARE(next, pieces);
    }

    void theLastLineNeedsNoEnd_data()
    {
        QTest::addColumn<QByteArray>("scanned"); // when the end comes
        QTest::addColumn<QByteArray>("waiting"); // for the next frame
        QTest::newRow("all is being looked at") << "x\nfatal error"_ba << QByteArray();
        QTest::newRow("its second half waits") << "x\nfatal er"_ba
                                               << "ror"_ba;
        QTest::newRow("all waits") << "x\n"_ba
                                   << "fatal error"_ba;
    }
    void theLastLineNeedsNoEnd()
    {
        QFETCH(QByteArray, scanned);
        QFETCH(QByteArray, waiting);
        LogDocument document({m_folder.path()});
        document.append(0, scanned);
        document.commit();
        document.setFilter(LogPattern(u"error"_s, true, false));
        document.append(0, waiting);
        document.finish();
        QTRY_COMPARE(document.examined(), 13);
        QCOMPARE(shownBytes(document), QByteArray("fatal error"));
        QCOMPARE(document.shownLines(), 1);
    }

    void manyMegabytesInParts()
    {
        // More than one mapped part of the file, and several scans.
        LogDocument document({m_folder.path()});
        const QByteArray block = "0123456789 ordinary line number one\n"_ba.repeated(1000);
        QByteArray all;
        for (int i = 0; i < (sanitized ? 600 : 2000); ++i) {
            const QByteArray text = i % 100 == 0 ? block + "a needle\r\n" : block;
            document.append(i % 3, text);
            all += text;
        }
        document.setFilter(LogPattern(u"NEEDLE"_s, false, false));
        QTRY_COMPARE(document.examined(), qint64(all.size()));
        QCOMPARE(document.shownLines(), sanitized ? 6 : 20);
        document.setFilter({});
        QVERIFY(document.problem().isEmpty());
        QVERIFY(document.bytes().read(0, document.size()) == all);
        const LogBytes old = document.bytes();
        document.clear();
        QCOMPARE(document.size(), 0);
        QCOMPARE(document.shown().lineCount(), 0);
        QVERIFY(old.read(0, all.size()) == all); // who still reads it may
        QVERIFY(QDir(m_folder.path()).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden));
    }

    void theFileIsNobodyElses()
    {
        const QTemporaryDir folder;
        LogDocument document({u"/nowhere"_s, folder.path()});
        const QByteArray secret(LogFile::blockLength, 'x');
        document.append(0, secret);
        document.commit();
        QByteArray file;
        for (const QFileInfo &entry : QDir(u"/proc/self/fd"_s).entryInfoList(QDir::System | QDir::Files)) {
            if (entry.symLinkTarget().startsWith(folder.path())) {
                QVERIFY(file.isEmpty());
                file = QFile::encodeName(entry.filePath());
            }
        }
        struct stat status = {};
        QTRY_VERIFY(::stat(file.constData(), &status) == 0 && status.st_size == secret.size());
        QCOMPARE(status.st_mode & 0777, 0600U);
        QCOMPARE(status.st_nlink, 0U);
        // Nor does it end the program when the disk loses it.
        QCOMPARE(::truncate(file.constData(), 0), 0);
        QTRY_COMPARE(document.bytes().read(0, secret.size()), QByteArray(secret.size(), '\0'));
        QVERIFY(document.problem().contains(u"does not give back"_s));
    }

    void aDiskThatHangsHoldsUpNobody()
    {
        std::promise<void> go;
        LogDisk disk;
        disk.write = [wait = go.get_future().share()](auto... arguments) {
            wait.wait();
            return ::pwrite(arguments...);
        };
        LogDocument document({m_folder.path()}, nullptr, disk);
        const QByteArray block = "some line of the log\n"_ba.repeated(100'000);
        for (int i = 0; i < 10; ++i) {
            document.append(0, block);
        }
        document.commit();
        QVERIFY(document.isBehind());
        QVERIFY(document.bytes().read(0, document.size()) == block.repeated(10));
        go.set_value();
        QTRY_VERIFY(!document.isBehind());
        QVERIFY(document.bytes().read(0, document.size()) == block.repeated(10));
        QVERIFY(document.problem().isEmpty());
    }

    void diskTroubleLosesNothing_data()
    {
        QTest::addColumn<qint64>("fails"); // after so many bytes
        QTest::addColumn<int>("error");
        QTest::addColumn<DiskSpace>("space");
        QTest::addColumn<QString>("said");
        const auto row = [](const char *name, qint64 fails, int error, const DiskSpace &space = {}) {
            QTest::newRow(name) << fails << error << space << QString::fromLocal8Bit(strerror(error));
        };
        row("full at once", 0, ENOSPC);
        row("full later, in the middle of a write", 700'001, ENOSPC);
        row("quota", 64, EDQUOT);
        const qint64 part = qint64(64) << 20;
        row("behind the first part", part + 5, ENOSPC, {3 * part + (qint64(1) << 30), 2'000'000'000});
        const auto reserve = [](const char *name, qint64 fails, const DiskSpace &space, const QString &said) {
            QTest::newRow(name) << fails << 0 << space << said;
        };
        reserve("others need the rest", 0, {1'999'999'999, 40'000'000'000}, u"leaves 2.0 GB to other"_s);
        reserve("others need the rest of a small disk", part, {part + (qint64(1) << 30) - 1, 4'000'000'000},
            u"only 1.1 GB of it are free, and a log leaves 1.1 GB"_s);
    }
    void diskTroubleLosesNothing()
    {
        QFETCH(qint64, fails);
        QFETCH(int, error);
        QFETCH(DiskSpace, space);
        QFETCH(QString, said);
        LogDisk disk;
        disk.write = [=](int file, const void *bytes, size_t count, off_t at) -> ssize_t {
            if (error != 0 && at >= fails) {
                errno = error;
                return -1;
            }
            return ::pwrite(file, bytes, error != 0 ? qMin(count, size_t(fails - at)) : count, at);
        };
        disk.space = [space](int file) -> DiskSpace {
            struct stat status = {};
            ::fstat(file, &status);
            return {space.free - status.st_size, space.total};
        };
        LogDocument document({m_folder.path()}, nullptr, disk);
        const QByteArray block = "some line of the log, with ä\n"_ba.repeated(5000);
        QByteArray all;
        const qint64 wanted = fails + 3'000'000;
        while (all.size() < wanted) {
            document.append(0, block);
            all += block;
        }
        document.commit();
        QTRY_VERIFY2(document.problem().contains(said), qPrintable(document.problem()));
        QVERIFY(!document.isFull());
        QVERIFY(document.bytes().read(0, document.size()) == all);
        QCOMPARE(document.lines(), qint64(all.count('\n')));
        // The stated limit, and only the rest of a character less.
        while (!document.isFull()) {
            document.append(1, block);
            document.commit();
        }
        const qint64 missing = fails + LogStore::memoryLimit - document.size();
        QVERIFY2(missing >= 0 && missing < 2, qPrintable(QString::number(missing)));
        const LogProjection &shown = document.shown();
        const qint64 last = shown.lineStart(shown.lineCount() - 1);
        const QByteArray line = document.bytes().read(last, document.size() - last);
        QVERIFY(line.isValidUtf8());
        QCOMPARE(makeLineText(line, {}).bytes.back(), line.size());
        QVERIFY2(document.problem().contains(u"used up"), qPrintable(document.problem()));
        QCOMPARE(shownBytes(document).size(), document.size());
    }

    void withoutAnyFolderTheLogIsInMemory()
    {
        LogDocument document({QString(), u"/nowhere"_s});
        QVERIFY(!document.problem().isEmpty());
        document.append(0, "kept");
        document.commit();
        QCOMPARE(shownBytes(document), QByteArray("kept"));
    }

    void patternsFind_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<bool>("sensitive");
        QTest::addColumn<bool>("expression");
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArrayList>("found");
        const auto row = [](const char *name, const char *pattern, const char *how, const char *line,
                             const QByteArrayList &found) {
            QTest::newRow(name) << QString::fromUtf8(pattern) << (strchr(how, 'c') != nullptr)
                                << (strchr(how, 'r') != nullptr) << QByteArray(line) << found;
        };
        row("text", "a.b", "c", "a.b axb a.b", {"a.b", "a.b"});
        row("case", "Error", "c", "error Error", {"Error"});
        row("no case", "eRRor", "", "error ERROR", {"error", "ERROR"});
        row("no case, not ASCII", "ÄPFEL", "", "x äpfel", {"äpfel"});
        row("a text with signs is no expression", "Ü(", "", "ü( x", {"ü("});
        row("expression", "a.+?b", "cr", "a--b €ab a€b", {"a--b", "ab a€b"});
        row("expression, no case", "E\\d", "r", "e1 E2", {"e1", "E2"});
        row("inside of colours", "error: x", "c", "\x1b[31merror\x1b[0m: x", {"error\x1b[0m: x"});
        row("overlapping", "aa", "c", "aaa", {"aa"});
        row("empty matches are none", "x*", "cr", "ab", {});
        row("invalid", "(", "cr", "(", {});
        // The padding before and behind ends and begins with a sign that is part of no word.
        row("bytes that are no text", "f.l\u00e4", "cr", "f\xfcl f\xfcl\u00e4", {"f\xfcl\u00e4"});
        row("the sign for them", "f\ufffdl", "c", "x f\xfcl", {"f\xfcl"});
        row("word", "\\bab\\b", "cr", "ab-xab ab", {"ab", "ab"});
        row("look-behind", "(?<=x)ab", "cr", "ab xab", {"ab"});
    }
    void patternsFind()
    {
        QFETCH(QString, pattern);
        QFETCH(bool, sensitive);
        QFETCH(bool, expression);
        QFETCH(QByteArray, line);
        QFETCH(QByteArrayList, found);
        const LogPattern compiled(pattern, sensitive, expression);
        QCOMPARE(compiled.isValid(), pattern != u"("_s);
        QByteArrayList actual;
        for (const LogRange &range : compiled.matches(line, 100).ranges) {
            actual.append(line.mid(range.start, range.length));
        }
        QCOMPARE(actual, found);
        // The same in a line that is looked at in several windows.
        for (const char *unit : {"\u20ac-", "\x80\x80\x80\x80"}) {
            const QByteArray padding = QByteArray(unit).repeated(50'000);
            const QByteArray longLine = padding + line + padding;
            actual.clear();
            for (const LogRange &range : compiled.matches(longLine, 100).ranges) {
                actual.append(longLine.mid(range.start, range.length));
            }
            if (pattern != u"a.+?b"_s) {
                QCOMPARE(actual, found);
            }
        }
    }

    void anchorsMeanTheLine()
    {
        const QByteArray line(300'000, 'x'); // several windows
        for (const QString &once : {u"^x"_s, u"x$"_s, u"\\bx"_s, u"(?<!x)x"_s}) {
            QCOMPARE(LogPattern(once, true, true).matches(line, 100).ranges.size(), 1U);
        }
    }

    void tooComplicatedIsTold()
    {
        LogDocument document({m_folder.path()});
        const LogPattern pattern(u"(x+x+)+y"_s, true, true);
        const QByteArray bad(40, 'x');
        document.append(0, QByteArray(bad + '\n' + bad + '\n' + bad + "\nxxy\n" + bad));
        document.setFilter(pattern);
        document.finish();
        QTRY_COMPARE(document.examined(), document.size());
        QCOMPARE(shownBytes(document), QByteArray("xxy\n"));
        QCOMPARE(document.cutOffLines(), 4);
        document.setFilter({});
        QCOMPARE(document.cutOffLines(), 0);
        LogSearch search(document);
        search.setPattern(pattern, 0);
        QTRY_VERIFY(!search.isSearching());
        QCOMPARE(search.count(), 1);
        QCOMPARE(search.cutOffLines(), 4);
    }

    void countlessMatchesAreNotCounted()
    {
        LogDocument document({m_folder.path()});
        const QByteArray line = QByteArray(1'000'000, 'x') + '\n';
        document.append(0, line.repeated(2));
        document.commit();
        LogSearch search(document);
        search.setPattern(LogPattern(u"x"_s, false, false), 0);
        QTRY_VERIFY(search.hasMore() && !search.isSearching());
        QCOMPARE(search.count(), LogSearch::mostMatches);
    }

    void linesAreShownClean_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<bool>("grid");
        const auto row = [](const char *name, const QByteArray &line, const char *shown, bool grid = true) {
            QTest::newRow(name) << line << QString::fromUtf8(shown) << grid;
        };
        row("plain", "a b\r\n", "a b");
        row("empty", "\n", "");
        row("tabs", "a\tb\t\n", "a       b       ");
        row("colour", "\x1b[31mred\x1b[0m.\x1b[1;4mbu\x1b[22mu", "<dc322f>red.<bu>bu<u>u");
        row("bright and background", "\x1b[91;40mx", "<ff6b64/586e75>x");
        row("256", "\x1b[38;5;196mx\x1b[48;5;255my\x1b[39mz", "<ff0000>x<ff0000/eeeeee>y</eeeeee>z");
        row("direct", "\x1b[38;2;1;2;3mx\x1b[38:2::4:5:6my", "<10203>x<40506>y");
        row("inverse", "\x1b[7mx\x1b[27my", "<i>xy");
        row("kinds of underline", "\x1b[4:3mx", "<u>x");
        row("other sequences", "\x1b[2Ka\x1b]0;title\ab\x1b(B\x1b[?25lc\x1b[>4;1md", "abcd");
        row("sequence that is cut", "a\x1b[3", "a");
        row("control strings without an end", "\x1b]"_ba.repeated(300'000) + 'x', "x");
        row("one-character introducer", "a\u009b31mb", "a<dc322f>b");
        row("controls", "a\a\x01\x7f\u0085b", "ab");
        row("NUL", QByteArray("a\0b", 3), "a\u2400b", false);
        row("overstruck", "N\bNA\bA", "NA");
        row("direction marks", "a\u202eb\u2066c", "abc");
        row("reserved", "a\ufdd0\ufffc\u2028b", "a\ufffd\ufffd b", false);
        row("wide", "日本", "日本", false);
        row("bytes that are no text", "a\xff\xc3(\x1b[31m\xe2\x82\n", "a\ufffd\ufffd(<dc322f>\ufffd\ufffd",
            false);
    }
    void linesAreShownClean()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, shown);
        QFETCH(bool, grid);
        const LogLineText text = makeLineText(line, {});
        QCOMPARE(described(text), shown);
        QCOMPARE(text.isGrid, grid);
        QCOMPARE(qsizetype(text.bytes.size()), text.text.size() + 1);
        QVERIFY(std::is_sorted(text.bytes.begin(), text.bytes.end()));
        QCOMPARE(text.bytes.back(), line.endsWith("\r\n") ? line.size() - 2 : line.size() - line.count('\n'));
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestLogDocument)
#include "tst_log_document.moc"
