// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/NaturalOrder.h"

#include <QTest>

using namespace tidewright;

class TestNaturalOrder : public QObject
{
    Q_OBJECT
private Q_SLOTS:
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
};

QTEST_GUILESS_MAIN(TestNaturalOrder)
#include "tst_natural_order.moc"
