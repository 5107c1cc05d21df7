// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/text/Timestamp.h"
#include "resources/kinds/KubeTableItem.h"

#include <QTest>

#include <cmath>
#include <limits>

using namespace tidewright;

namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

} // namespace

class TestAges : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void timestamps_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<qint64>("seconds");
        const std::vector<std::pair<const char *, qint64>> valid{{"1970-01-01T00:00:00Z", 0},
            {"1969-12-31T23:59:59Z", -1}, {"2019-04-02T10:00:00Z", 1554199200},
            {"2019-04-02T12:00:00+02:00", 1554199200}, {"2019-04-02T00:30:00-09:30", 1554199200},
            {"2000-02-29T00:00:00Z", 951782400}, {"2020-02-29T23:59:59Z", 1583020799},
            {"2038-01-19T03:14:08Z", 2147483648}};
        for (const auto &[text, seconds] : valid) {
            QTest::newRow(text) << QString::fromLatin1(text) << true << seconds;
        }
        for (const char *text :
            {"", "<no value>", "2019-04-02", "2019-04-02T10:00:00", "2019-04-02 10:00:00Z",
                "2019-04-02T10:00:00.000Z", "2019-04-02t10:00:00Z", "2019-04-02T10:00:00z",
                "2019-02-29T10:00:00Z", "1900-02-29T00:00:00Z", "2019-04-31T10:00:00Z",
                "2019-13-01T10:00:00Z", "2019-00-01T10:00:00Z", "2019-04-00T10:00:00Z",
                "2019-04-02T24:00:00Z", "2019-04-02T10:60:00Z", "2016-12-31T23:59:60Z",
                "2019-04-02T10:00:00+0200", "2019-04-02T10:00:00+24:00", "2019-04-02T10:00:00+02:60",
                "2019-04-02T10:00:00Z ", " 2019-04-02T10:00:00Z", "2019-04-02T10:00:00ZZ",
                "+019-04-02T10:00:00Z", "2019-4-02T10:00:00Z", "2019-04-02T10:0a:00Z"}) {
            QTest::addRow("not '%s'", text) << QString::fromLatin1(text) << false << qint64(0);
        }
        QTest::newRow("other digits") << QString::fromUtf8("२०१९-04-02T10:00:00Z") << false << qint64(0);
    }

    void timestamps()
    {
        QFETCH(QString, text);
        const auto seconds = parseTimestamp(text);
        QTEST(seconds.has_value(), "valid");
        QTEST(seconds.value_or(0), "seconds");
    }

    void ageTexts_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        const std::vector<std::pair<double, const char *>> ages{{std::nan(""), "<1m"}, {-infinite, "<1m"},
            {-1e6, "<1m"}, {0, "<1m"}, {60, "<1m"}, {60.5, "1m"}, {61, "1m"}, {119.9, "1m"}, {3599, "59m"},
            {3600, "60m"}, {3600.5, "1h 0m"}, {7259, "2h 0m"}, {86399, "23h 59m"}, {86400, "24h 0m"},
            {86400.5, "1 day"}, {3.9 * 86400, "3 days"}, {1e8, "1,157 days"}, {1e300, "--"},
            {infinite, "--"}};
        for (const auto &[seconds, text] : ages) {
            QTest::addRow("%g", seconds) << seconds << QString::fromLatin1(text);
        }
    }

    void ageTexts()
    {
        QFETCH(double, seconds);
        QTEST(formatAge(seconds, false), "text");
    }
};

QTEST_GUILESS_MAIN(TestAges)
#include "tst_ages.moc"
