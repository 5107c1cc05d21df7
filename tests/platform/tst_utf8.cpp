// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/Utf8.h"

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

    void decodesOnlyWhatIsValid_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text"); // null: not valid
        QTest::newRow("empty") << QByteArray() << QStringLiteral("");
        QTest::newRow("text") << QByteArray("\u00e4\U0001f600") << QStringLiteral("\u00e4\U0001f600");
        QTest::newRow("NUL") << QByteArray("a\0b", 3) << QString::fromUtf16(u"a\0b", 3);
        QTest::newRow("cut") << QByteArray("a\xe2\x82") << QString();
        QTest::newRow("surrogate") << QByteArray("\xed\xa0\x80") << QString();
        QTest::newRow("overlong") << QByteArray("\xc0\xaf") << QString();
        QTest::newRow("latin-1") << QByteArray("caf\xe9 x") << QString();
    }
    void decodesOnlyWhatIsValid()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        const auto decoded = decodeUtf8(bytes);
        QCOMPARE(decoded.has_value(), !text.isNull());
        QCOMPARE(decoded.value_or(QString()), text);
    }
};

QTEST_GUILESS_MAIN(TestUtf8)
#include "tst_utf8.moc"
