// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/Glob.h"
#include "platform/text/LinkDetection.h"

#include <QTest>

using namespace tidewright;
using namespace Qt::StringLiterals;

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

QTEST_GUILESS_MAIN(tst_patterns)
#include "tst_patterns.moc"
