// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/Glob.h"
#include "platform/text/LinkDetection.h"
#include "platform/text/RandomString.h"

#include <QElapsedTimer>
#include <QSet>
#include <QTest>

#include <random>
#include <thread>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

/// The link expression as it was handed down, 190 bytes.
const QString givenExpression
    = u"(?xi)\n(?:(?:https?|ftp):\\/\\/"
      u"|\\b(?:[a-z\\d]+\\.))(?:(?:[^\\s()<>]+|\\((?:[^\\s()<>]+|(?:\\([^\\s()<>]+\\)))?\\))+"
      "(?:\\((?:[^\\s()<>]+|(?:\\(?:[^\\s()<>]+\\)))?\\)|[^\\s`!()\\[\\]{};:'\".,<>?«»“”‘’]))?"_s;

QString randomText(std::mt19937 &random, const QString &alphabet, int length)
{
    QString text;
    for (int i = 0; i < length; ++i) {
        text.append(alphabet.at(static_cast<qsizetype>(random() % size_t(alphabet.size()))));
    }
    return text;
}

} // namespace

class tst_patterns : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void globsMatchWholeNames()
    {
        struct Case
        {
            QString pattern, regex;
            QStringList matching, others;
        };
        const QList<Case> cases{
            {u"web-*"_s, u"^web-.*?$"_s, {u"web-1"_s, u"web-"_s},
                {u"myweb-1"_s, u"Web-1"_s, u"web"_s, QString()}},
            {u"*"_s, u"^.*?$"_s, {u"x"_s, QString(), u"ä"_s}, {}},
            {u"a.b"_s, u"^a.b$"_s, {u"a.b"_s, u"axb"_s}, {u"ab"_s}},
            {u"app?"_s, u"^app?$"_s, {u"app"_s, u"ap"_s}, {u"appx"_s}},
            {u"db-[0-2]"_s, u"^db-[0-2]$"_s, {u"db-2"_s}, {u"db-3"_s}},
            {u"a|b"_s, u"^a|b$"_s, {u"ax"_s, u"xb"_s}, {u"xa"_s}},
            {u"a[b"_s, u"^a[b$"_s, {}, {u"a[b"_s, u"ab"_s, QString()}},
            {u"(a)*"_s, u"^(a).*?$"_s, {u"a"_s, u"axx"_s}, {QString()}},
            {u"(a+)+b"_s, u"^(a+)+b$"_s, {u"aab"_s}, {QString(253, u'a')}}, // would backtrack for ever
            {QString(), u"^$"_s, {QString()}, {u"a"_s}},
        };
        for (const Case &test : cases) {
            Glob glob(test.pattern);
            QVERIFY(glob.patternRegex().isEmpty() && !glob.matches(test.matching.value(0)));
            glob.compile();
            QCOMPARE(glob.patternRegex(), test.regex);
            QCOMPARE(glob.pattern(), test.pattern);
            auto searcher = glob.searcher();
            for (const QString &name : test.others + test.matching) { // the searcher outlives one cut off
                const bool expected = test.matching.contains(name);
                QVERIFY2(glob.matches(name) == expected && searcher.matches(name) == expected,
                    qPrintable(test.pattern + u' ' + name));
            }
        }
    }

    void searchesOnManyThreadsDoNotDisturbEachOther()
    {
        Glob glob(u"*-(x+x+)+y-7"_s); // some of the searches are cut off
        glob.compile();
        std::atomic<int> matched = 0;
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&glob, &matched] {
                for (int n = 0; n < 30; ++n) {
                    matched += glob.matches(u"pod-xxxxy-%1"_s.arg(n % 10));
                    matched += glob.matches(u"pod-%1"_s.arg(QString(60, u'x')));
                }
            });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }
        QCOMPARE(matched, 4 * 3);
    }

    void linksAreFound()
    {
        const QList<std::pair<QString, QStringList>> cases{
            {u"nothing to see, really"_s, {}},
            {u"see https://a.io/x?y=1 (docs)."_s, {u"https://a.io/x?y=1"_s}},
            {u"(http://a.io/x_(y)) ftp://b.io/,"_s, {u"http://a.io/x_(y)"_s, u"ftp://b.io/"_s}},
            {u"At www.a.io/b, HTTPS://C.io!"_s, {u"www.a.io/b"_s, u"HTTPS://C.io"_s}},
            {u"done. ftp:// 10."_s, {u"done."_s, u"ftp://"_s, u"10."_s}},
            {u"file:///etc javascript:x ssh://h"_s, {}},
            {u"\"http://a.io\" <http://b.io> “ftp://cd”"_s,
                {u"http://a.io"_s, u"http://b.io"_s, u"ftp://cd"_s}},
            {u"😀 http://a.io/😀 x"_s, {u"http://a.io/😀"_s}},
            {u"a.io b.%1 http://c.io/d"_s.arg(QString(60, u'.')), {u"a.io"_s, u"b."_s, u"http://c.io/d"_s}},
        };
        for (const auto &[text, links] : cases) {
            QStringList found;
            for (const DetectedLink &link : detectLinks(text)) {
                found.append(link.text);
                QCOMPARE(link.text, text.mid(link.range.start, link.range.length));
            }
            QCOMPARE(found, links);
        }
    }

    /// Behind a text that makes the expression backtrack for ever, links are still exactly those that it
    /// finds.
    void linksBehindACutOffAreThoseOfTheExpression()
    {
        QCOMPARE(givenExpression.toUtf8().size(), 190);
        const RegularExpression given(givenExpression, 100'000);
        const QString endless = u"x%1 "_s.arg(QString(200, u'.'));
        const QString alphabet = u"a.():/1,!h<« \n"_s;
        std::mt19937 random(20);
        int links = 0;
        for (int round = 0; round < 400; ++round) {
            const QString text
                = randomText(random, alphabet, 14) + u"http://" + randomText(random, alphabet, 10);
            const RegularExpression::Matches expected = given.allMatches(text);
            QVERIFY(!expected.cutOff);
            std::vector<DetectedLink> found = detectLinks(endless + text);
            QCOMPARE(found.front().text, u"x."_s);
            QCOMPARE(found.size(), expected.ranges.size() + 1);
            for (size_t i = 0; i < expected.ranges.size(); ++i) {
                found[i + 1].range.start -= endless.size();
                QVERIFY2(found[i + 1].range == expected.ranges[i], qPrintable(text));
            }
            links += static_cast<int>(expected.ranges.size());
        }
        QVERIFY(links > 400);
    }

    /// A line of prose takes a fraction of a millisecond; nothing else may take many times that.
    void noLineTakesMuchLongerThanProse()
    {
        const auto shortestOfThree = [](const QString &line) {
            qint64 shortest = std::numeric_limits<qint64>::max();
            for (int i = 0; i < 3; ++i) {
                QElapsedTimer timer;
                timer.start();
                detectLinks(line);
                shortest = qMin(shortest, timer.nsecsElapsed());
            }
            return shortest;
        };
        const qint64 prose = shortestOfThree(u"some words and http://a.io/b "_s.repeated(110));
        for (const char *unit : {"(", ")", ".", "a", "a.", "a..", "(((a.", "a.(", "a.()", "a.((x))",
                 "a.((x))..", "http://(", "a.(b..(", "é.", "a.!!!!!!!!!!!!!!!!!!!!!!!!!!! ", "a-", "https",
                 "a.\u0301", "[({<", "1.2.3.4:"}) {
            for (const char *start : {"", "a.", "http://"}) {
                const QString line = QString::fromUtf8(start) + QString::fromUtf8(unit).repeated(3000);
                QVERIFY2(shortestOfThree(line.left(3000)) <= 50 * prose, unit);
            }
        }
    }

    void randomStringsUseTheWholeAlphabet()
    {
        QCOMPARE(randomString(0), QString());
        QCOMPARE(randomString(-1), QString());
        const QString text = randomString(36 * 200);
        QCOMPARE(text.size(), 36 * 200);
        QCOMPARE(QSet<QChar>(text.cbegin(), text.cend()).size(), 36);
        QVERIFY(std::all_of(text.cbegin(), text.cend(),
            [](QChar c) { return u"abcdefghijklmnopqrstuvwxyz0123456789"_s.contains(c); }));
        QSet<QString> names;
        for (int i = 0; i < 1000; ++i) {
            names.insert(randomString(8));
        }
        QVERIFY(names.size() > 995);
    }
};

QTEST_GUILESS_MAIN(tst_patterns)
#include "tst_patterns.moc"
