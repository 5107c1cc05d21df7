// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/DisplayText.h"
#include "platform/text/Glob.h"
#include "platform/text/LinkDetection.h"
#include "platform/text/NaturalOrder.h"
#include "platform/text/Utf8.h"

#include <QTest>

using namespace tidewright;
using namespace Qt::StringLiterals;

class tst_text : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void trimsBothEnds_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("trimmed");
        QTest::newRow("nothing") << QByteArray() << QByteArray();
        QTest::newRow("plain") << QByteArray("a b") << QByteArray("a b");
        QTest::newRow("tab and line ends") << QByteArray("\t\r\na\tb\n\v\f\n") << QByteArray("a\tb");
        QTest::newRow("no-break space") << QByteArray("\u00a0x\u00a0") << QByteArray("x");
        QTest::newRow("line and paragraph separator") << QByteArray("\u2028x\u2029") << QByteArray("x");
        QTest::newRow("next line") << QByteArray("\u0085x\u0085") << QByteArray("x");
        QTest::newRow("wide spaces") << QByteArray("\u3000\u2003x\u205f\u1680") << QByteArray("x");
        QTest::newRow("white space only") << QByteArray(" \u00a0\n\u2028\t ") << QByteArray();
        QTest::newRow("letters that end in the byte of a space")
            << QByteArray("\u0120\u00e0\u0105") << QByteArray("\u0120\u00e0\u0105");
        QTest::newRow("four bytes") << QByteArray(" \U0001f600 ") << QByteArray("\U0001f600");
        QTest::newRow("zero width space is no white space") << QByteArray("\u200bx") << QByteArray("\u200bx");
        QTest::newRow("control characters stay")
            << QByteArray("\0\x1bx\x1f", 4) << QByteArray("\0\x1bx\x1f", 4);
    }
    void trimsBothEnds()
    {
        QFETCH(QByteArray, text);
        QTEST(trimmedUtf8(text), "trimmed");
    }

    void findsTheTailThatWaits_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<qsizetype>("tail");
        const QByteArray text("a\u00e4\u20ac\U0001f600");
        const qsizetype expected[] = {0, 0, 1, 0, 1, 2, 0, 1, 2, 3, 0};
        for (qsizetype length = 0; length <= text.size(); ++length) {
            QTest::addRow("first %d bytes", int(length)) << text.first(length) << expected[length];
        }
        QTest::newRow("lone continuations") << QByteArray("\x80\x80\x80\x80") << qsizetype(0);
        QTest::newRow("too many continuations") << QByteArray("\xc3\xa4\xa4") << qsizetype(0);
        QTest::newRow("never a beginning") << QByteArray("a\xff") << qsizetype(0);
        QTest::newRow("beyond the last character") << QByteArray("a\xf5") << qsizetype(0);
        QTest::newRow("overlong") << QByteArray("a\xc0") << qsizetype(0);
    }
    void findsTheTailThatWaits()
    {
        QFETCH(QByteArray, bytes);
        QTEST(incompleteUtf8Tail(bytes), "tail");
    }

    void decodes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QString>("shown");
        const auto row = [](const char *name, const QByteArray &bytes, bool valid, const QString &shown) {
            QTest::newRow(name) << bytes << valid << shown;
        };
        row("empty", "", true, QString());
        row("text", "\u00e4\U0001f600", true, QStringLiteral("\u00e4\U0001f600"));
        row("NUL", QByteArray("a\0b", 3), true, QString::fromUtf16(u"a\0b", 3));
        row("cut", "a\xe2\x82", false, QStringLiteral("a\ufffd\ufffd"));
        row("surrogate", "\xed\xa0\x80", false, QStringLiteral("\ufffd\ufffd\ufffd"));
        row("overlong", "\xc0\xaf", false, QStringLiteral("\ufffd\ufffd"));
        row("latin-1", "caf\xe9 x", false, QStringLiteral("caf\ufffd x"));
        row("among characters", "\U0001f600\xff\ufffd\xf0\x9f\u00e4", false,
            QStringLiteral("\U0001f600\ufffd\ufffd\ufffd\ufffd\u00e4"));
    }
    void decodes()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, valid);
        QFETCH(QString, shown);
        QCOMPARE(decodeUtf8(bytes), valid ? std::optional(shown) : std::nullopt);
        QCOMPARE(shownUtf8(bytes), shown);
        // Where a beginning ends, the rest begins.
        for (qsizetype units = 0; units <= shown.size(); ++units) {
            const qsizetype count = bytesShownAs(QStringView(shown).first(units), bytes);
            if (units == shown.size() || !shown[units].isLowSurrogate()) {
                QCOMPARE(shownUtf8(bytes.sliced(count)), shown.sliced(units));
            }
        }
    }

    void madeFitToBeShown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown"); // "?" stands for a replacement character
        QTest::addColumn<QString>("tip"); // without the paragraph around it
        QTest::addColumn<bool>("acts"); // when it is pasted
        const auto row = [](const char *name, const QString &text, const QString &shown, const QString &tip,
                             bool acts = false) { QTest::newRow(name) << text << shown << tip << acts; };
        const auto same = [&row](const char *name, const QString &text) { row(name, text, text, text); };
        same("name", QStringLiteral("web-7d4c9"));
        same("lines", QStringLiteral("one\ttwo\nthree"));
        same("letters from right to left", QStringLiteral("\u05d0\u0628 \U0001f600"));
        row("mark-up", QStringLiteral("a<b>"), QStringLiteral("a<b>"), QStringLiteral("a&lt;b&gt;"));
        row("long", QString(101, u'&'), QString(101, u'&'), QStringLiteral("&amp;").repeated(101));
        row("too long", QString(5000, u'x'), QString(5000, u'x'), QString(4000, u'x') + QChar(0x2026));
        const QString unseen = QStringLiteral("a\u061c\u200e\u200f\u2028\u2029\u202a\u202e\u2066\u2069b");
        row("directions", unseen, QStringLiteral("a?????????b"), QStringLiteral("a?????????b"));
        row("keys", QStringLiteral("a\r\u0003\u001b\u007f\u009bb"), QStringLiteral("a?????b"),
            QStringLiteral("a?????b"), true);
    }
    void madeFitToBeShown()
    {
        QFETCH(QString, text);
        QFETCH(QString, tip);
        const auto marked = [](QString cleaned) { return cleaned.replace(QChar(0xfffd), QLatin1Char('?')); };
        QTEST(marked(display_text::clean(text)), "shown");
        QTEST(display_text::actsWhenPasted(text), "acts");
        QCOMPARE(display_text::name(text), display_text::clean(display_text::shortened(text, 1000)));
        QString shown = marked(display_text::toolTip(text));
        if (shown.startsWith(QLatin1Char('<'))) {
            shown = shown.mid(shown.indexOf(QLatin1Char('>')) + 1).chopped(4);
        }
        QCOMPARE(shown, tip);
    }

    void ordersNames_data()
    {
        QTest::addColumn<QStringList>("ascending");
        const QString nines(300, u'9');
        QTest::newRow("numbers by value")
            << QStringList{QStringLiteral("pod-2"), QStringLiteral("pod-10"), QStringLiteral("pod-100")};
        QTest::newRow("a number after its prefix")
            << QStringList{QStringLiteral("pod"), QStringLiteral("pod1"), QStringLiteral("pod1-a"),
                   QStringLiteral("pod1-b"), QStringLiteral("pod2")};
        QTest::newRow("letters without case")
            << QStringList{QStringLiteral("alpha"), QStringLiteral("Beta"), QStringLiteral("gamma")};
        QTest::newRow("versions") << QStringList{QStringLiteral("v1.9.2"), QStringLiteral("v1.10.0"),
            QStringLiteral("v1.10.0-rc2"), QStringLiteral("v1.10.0-rc10"), QStringLiteral("v2")};
        QTest::newRow("zeros in front do not count") << QStringList{
            QStringLiteral("a1"), QStringLiteral("a002"), QStringLiteral("a3"), QStringLiteral("a0004")};
        QTest::newRow("numbers of hundreds of digits")
            << QStringList{QString(200, u'9'), QLatin1Char('1') + QString(253, u'0'), QString(254, u'9'),
                   QString(255, u'1'), QString(256, u'1'), nines, nines + u'0'};
        QTest::newRow("beyond ASCII") << QStringList{QStringLiteral("az"), QStringLiteral("a\u00e4"),
            QStringLiteral("a\u00c4b"), QStringLiteral("a\u00f6")};
    }
    void ordersNames()
    {
        QFETCH(QStringList, ascending);
        for (qsizetype i = 0; i < ascending.size(); ++i) {
            for (qsizetype j = 0; j < ascending.size(); ++j) {
                const auto a = naturalSortKey(ascending[i]);
                const auto b = naturalSortKey(ascending[j]);
                QVERIFY2((a < b) == (i < j) && (a == b) == (i == j),
                    qPrintable(ascending[i] + u' ' + ascending[j]));
            }
        }
    }

    void isTotal()
    {
        // Equal to a reader, but a sort must not swap them from one refresh to the next.
        QVERIFY(naturalSortKey(u"Pod-1") != naturalSortKey(u"pod-1"));
        QVERIFY(naturalSortKey(u"pod-01") != naturalSortKey(u"pod-1"));
        QCOMPARE(naturalSortKey(u"pod-1"), naturalSortKey(u"pod-1"));
    }

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
            // Repeating runs of characters, the expression would try for ever.
            {u"a.io b.%1 http://c.io/d"_s.arg(QString(3000, u'.')), {u"a.io"_s, u"b."_s, u"http://c.io/d"_s}},
            {u"a.(%1 http://c.io/(d)"_s.arg(u"((x))..("_s.repeated(400)), {u"a."_s, u"http://c.io/(d)"_s}},
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
};

QTEST_GUILESS_MAIN(tst_text)
#include "tst_text.moc"
