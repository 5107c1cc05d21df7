// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/DisplayText.h"
#include "platform/text/Utf8.h"

#include <QTest>

using namespace tidewright;

class TestUtf8 : public QObject
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
        QString shown = marked(display_text::toolTip(text));
        if (shown.startsWith(QLatin1Char('<'))) {
            shown = shown.mid(shown.indexOf(QLatin1Char('>')) + 1).chopped(4);
        }
        QCOMPARE(shown, tip);
    }
};

QTEST_GUILESS_MAIN(TestUtf8)
#include "tst_utf8.moc"
