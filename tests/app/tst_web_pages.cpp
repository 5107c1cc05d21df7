// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/window/WebPages.h"

#include <QTest>

using namespace Qt::StringLiterals;
using tidewright::WebPage;
using tidewright::WebPages;

class TestWebPages : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void addresses_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<WebPage>("page");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("address");
        const QString base = u"https://pages.example/"_s;
        QTest::newRow("page") << R"({"issues": "https://pages.example/issues?new"})"_ba
                              << WebPage::ReportIssue << u"1.2"_s << base + u"issues?new"_s;
        QTest::newRow("feedback") << R"({"feedback": "https://pages.example/say"})"_ba << WebPage::Feedback
                                  << u"1.2 beta"_s
                                  << base + u"say?product_name=Tidewright&version_number=1.2+beta"_s;
        QTest::newRow("feedback with a query")
            << R"({"feedback": "https://pages.example/say?a=b"})"_ba << WebPage::Feedback << u"1.2"_s
            << base + u"say?a=b&product_name=Tidewright&version_number=1.2"_s;
        QTest::newRow("none") << R"({"home": ""})"_ba << WebPage::MoreApps << u"1"_s << QString();
        QTest::newRow("no feedback page") << R"({})"_ba << WebPage::Feedback << u"1"_s << QString();
        QTest::newRow("not a page") << R"({"changelog": "file:///etc/passwd"})"_ba << WebPage::Changelog
                                    << u"1"_s << QString();
        QTest::newRow("a file that the package lacks")
            << R"({"documentation": "nothing.html"})"_ba << WebPage::Documentation << u"1"_s << QString();
        QTest::newRow("wrong type") << R"({"home": 7})"_ba << WebPage::MoreApps << u"1"_s << QString();
        QTest::newRow("broken") << R"({"home": )"_ba << WebPage::MoreApps << u"1"_s << QString();
    }
    void addresses()
    {
        QFETCH(QByteArray, json);
        QFETCH(WebPage, page);
        QFETCH(QString, version);
        QFETCH(QString, address);
        const WebPages pages(json);
        QCOMPARE(pages.address(page, version).toString(QUrl::FullyEncoded), address);
        QCOMPARE(pages.has(page), !address.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestWebPages)
#include "tst_web_pages.moc"
