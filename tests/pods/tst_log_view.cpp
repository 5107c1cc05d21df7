// SPDX-License-Identifier: GPL-3.0-or-later
// The log view: what stays where it is, what is selected, what is painted.
#include "platform/threads/MainQueue.h"
#include "pods/logs/text/LogSearch.h"
#include "pods/logs/view/LogView.h"
#include "support/Patience.h"
#include "support/TestSupport.h"

#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

struct Bench
{
    explicit Bench(const QString &folder)
        : document({folder})
        , view(document)
    {
        view.setSourceColours({Qt::white, Qt::yellow});
        view.resize(600, 300);
        view.show();
    }

    void add(const QString &text, int source = 0)
    {
        document.append(source, text.toUtf8());
        QSignalSpy arrived(&document, &LogDocument::appended);
        QTRY_VERIFY(!arrived.isEmpty());
    }
    void addLines(int count, int first = 0)
    {
        QString text;
        for (int i = first; i < first + count; ++i) {
            text += u"line %1"_s.arg(i) + (i % 5 == 0 ? QString(i % 300, u'x') : QString())
                + (i % 7 == 0 ? u" 日本 e\u0301"_s : QString()) + u'\n';
        }
        all += text;
        add(text);
    }
    void wheel(int pixels)
    {
        QWheelEvent event({50, 50}, view.mapToGlobal(QPointF(50, 50)), {0, pixels}, {0, pixels}, Qt::NoButton,
            Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(view.viewport(), &event);
    }
    QImage picture() { return view.viewport()->grab().toImage(); }
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&view, Qt::Key(key), modifiers);
    }
    /// The selected text as it lies in the store.
    QString selected() { return QString::fromUtf8(document.bytes().read(view.selection().shownRanges())); }
    int rowHeight() const { return view.appearance().rowHeight; }

    LogDocument document;
    LogView view;
    QString all;
};

} // namespace

class TestLogView : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { mainQueue(); }

    void followsOrStays_data()
    {
        QTest::addColumn<bool>("wrapping");
        QTest::newRow("wrapped") << true;
        QTest::newRow("not wrapped") << false;
    }
    void followsOrStays()
    {
        QFETCH(bool, wrapping);
        Bench bench(m_folder.path());
        bench.view.scroll().setWrapping(wrapping);
        QSignalSpy following(&bench.view.scroll(), &LogScroll::followingChanged);
        bench.addLines(300);
        QVERIFY(bench.view.scroll().isFollowing());
        QVERIFY(bench.view.visibleText().contains(u"line 299"_s));
        const QScrollBar &bar = *bench.view.verticalScrollBar();
        QCOMPARE(bar.value(), bar.maximum());
        bench.addLines(1, 300);
        QVERIFY(bench.view.visibleText().contains(u"line 300"_s));

        bench.wheel(517); // not a whole number of rows
        QVERIFY(!bench.view.scroll().isFollowing());
        const auto top = bench.view.scroll().top();
        const QImage before = bench.picture();
        for (int i = 0; i < 5; ++i) {
            bench.addLines(200, 301 + i * 200);
        }
        QCOMPARE(bench.view.scroll().top(), top);
        QVERIFY(bench.picture() == before);
        bench.key(Qt::Key_End, Qt::ControlModifier);
        QVERIFY(bench.view.scroll().isFollowing());
        QVERIFY(bench.view.visibleText().contains(u"line 1300"_s));
        bench.addLines(1, 5000);
        QVERIFY(bench.view.visibleText().contains(u"line 5000"_s));
        QCOMPARE(following.size(), 2);

        bench.key(Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(bench.view.scroll().top(), (LogScroll::Top{0, 0}));
        bench.key(Qt::Key_Down);
        bench.key(Qt::Key_PageDown);
        bench.key(Qt::Key_Up);
        bench.key(Qt::Key_PageUp);
        QCOMPARE(bench.view.scroll().top(), (LogScroll::Top{0, 0}));
        bench.wheel(-3);
        QCOMPARE(bench.view.scroll().top(), (LogScroll::Top{0, 3}));
        // Dragging the bar's handle to the end follows again.
        bench.view.verticalScrollBar()->setValue(bench.view.verticalScrollBar()->maximum());
        QVERIFY(bench.view.scroll().isFollowing());
    }

    void theTopStaysWhenRowsChange_data()
    {
        QTest::addColumn<int>("step");
        QTest::newRow("narrower") << 0;
        QTest::newRow("larger text") << 1;
        QTest::newRow("filtered and back") << 2;
    }
    void theTopStaysWhenRowsChange()
    {
        QFETCH(int, step);
        Bench bench(m_folder.path());
        bench.addLines(2000);
        bench.view.verticalScrollBar()->setValue(700);
        const qint64 top = bench.view.scroll().topPosition();
        QVERIFY(top > 0);
        switch (step) {
        case 0:
            bench.view.resize(333, 300);
            break;
        case 1:
            bench.key(Qt::Key_Plus, Qt::ControlModifier);
            break;
        default:
            bench.document.setFilter(LogPattern(u"7"_s, true, false));
            QTRY_VERIFY(bench.document.examined() == bench.document.size());
            QTRY_VERIFY(bench.view.visibleText().startsWith(u"line 7"_s));
            bench.document.setFilter({});
        }
        QTRY_COMPARE(bench.view.scroll().topPosition(), top);
        QVERIFY(!bench.view.scroll().isFollowing());
    }

    void selectsAcrossScreens()
    {
        Bench bench(m_folder.path());
        bench.addLines(3000);
        const auto click = [&](QPoint at, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
            QTest::mouseClick(bench.view.viewport(), Qt::LeftButton, modifiers, at);
        };
        bench.key(Qt::Key_Home, Qt::ControlModifier);
        click({0, 2}); // before the first character
        bench.view.verticalScrollBar()->setValue(1500);
        const QString line = bench.view.visibleText().section(u'\n', 0, 0);
        click({590, 2 + bench.rowHeight() * 0}, Qt::ShiftModifier);
        const qsizetype row = bench.all.indexOf(line);
        QVERIFY(row > 20'000);
        QVERIFY2(bench.all.startsWith(bench.selected()) && bench.selected().size() > row,
            qPrintable(bench.selected().right(50)));
        bench.key(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), bench.selected());
        // More text arrives, and the selection stays what it was.
        const QString before = bench.selected();
        bench.addLines(500, 3000);
        QCOMPARE(bench.selected(), before);
        bench.key(Qt::Key_A, Qt::ControlModifier);
        bench.key(Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), bench.all);
        // What is not shown is not copied.
        bench.document.setFilter(LogPattern(u"line 777"_s, true, false));
        QTRY_VERIFY(bench.document.examined() == bench.document.size());
        QCOMPARE(bench.selected().count(u'\n'), 1);
    }

    void draggingBeyondTheEdgeScrolls()
    {
        Bench bench(m_folder.path());
        bench.addLines(400);
        bench.key(Qt::Key_Home, Qt::ControlModifier);
        QWidget *port = bench.view.viewport();
        QTest::mousePress(port, Qt::LeftButton, {}, {0, 2});
        QTest::mouseMove(port, {100, 290});
        QTest::mouseMove(port, {100, 400});
        QTRY_VERIFY(bench.view.scroll().top().line > 60);
        QTest::mouseRelease(port, Qt::LeftButton, {}, {100, 400});
        QVERIFY(bench.all.startsWith(bench.selected()));
        QVERIFY(bench.selected().count(u'\n') > 60);
    }

    void clicksAndKeysSelect()
    {
        Bench bench(m_folder.path());
        bench.add(u"alpha beta-1 gamma\nשלום \u001b[31mred\u001b[0m\n\tend\n"_s);
        const int x = 14 + int(bench.view.appearance().cellWidth * 8);
        QTest::mouseDClick(bench.view.viewport(), Qt::LeftButton, {}, {x, 3});
        QCOMPARE(bench.selected(), u"beta-1"_s);
        QTest::mouseClick(bench.view.viewport(), Qt::LeftButton, {}, {x, 3}); // the third
        QCOMPARE(bench.selected(), u"alpha beta-1 gamma\n"_s);
        QTest::mouseClick(bench.view.viewport(), Qt::LeftButton, {}, {0, 3});
        QVERIFY(bench.view.selection().isEmpty());
        bench.key(Qt::Key_Right, Qt::ShiftModifier);
        bench.key(Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(bench.selected(), u"al"_s);
        bench.key(Qt::Key_Down, Qt::ShiftModifier);
        bench.key(Qt::Key_End, Qt::ShiftModifier);
        bench.view.selection().copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"alpha beta-1 gamma\nשלום red"_s);
        bench.key(Qt::Key_End, Qt::ShiftModifier | Qt::ControlModifier);
        bench.view.selection().copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"alpha beta-1 gamma\nשלום red\n\tend"_s);
    }

    void paintsInColours()
    {
        Bench bench(m_folder.path());
        bench.add(u"\u001b[38;2;255;0;255m██\u001b[0m"_s);
        bench.add(u"██"_s, 1);
        bench.add(u"██ \u001b[48;2;0;255;0m  \u001b[0m needle\n"_s, 0);
        bench.view.setHighlight(LogPattern(u"NEEDLE"_s, false, false), 0);
        const QImage picture = bench.picture().convertToFormat(QImage::Format_RGB32);
        QSet<QRgb> colours;
        for (int x = 0; x < picture.width(); ++x) {
            for (int y = 0; y < bench.rowHeight(); ++y) {
                colours.insert(picture.pixel(x, y));
            }
        }
        const LogLook hidden{.foreground = qRgb(0, 43, 54), .background = qRgb(0, 43, 55)};
        QCOMPARE(bench.view.appearance().colourOf(hidden), QColor(Qt::white));
        for (const QColor colour : {QColor(255, 0, 255), QColor(Qt::yellow), QColor(Qt::white),
                 QColor(0, 255, 0), QColor(0x6B, 0x5A, 0x10), bench.view.appearance().background}) {
            QVERIFY2(colours.contains(colour.rgb()), qPrintable(colour.name()));
        }
    }

    void marksLongLinesAsTheyAreFound_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<std::vector<LogRange>>("inSecondPiece");
        QTest::newRow("begin of the line") << u"^.."_s << std::vector<LogRange>{};
        QTest::newRow("across the cut") << u"A+"_s << std::vector<LogRange>{{-96, 200}};
        QTest::newRow("end of the line") << u"b$"_s << std::vector<LogRange>{};
    }
    void marksLongLinesAsTheyAreFound()
    {
        QFETCH(QString, pattern);
        Bench bench(m_folder.path());
        bench.add(u"\u001b[31m"_s + QString(3995, u'.') + QString(200, u'A') + QString(8000, u'b') + u'\n');
        LogLineCache lines(bench.document);
        lines.setPattern(LogPattern(pattern, true, true));
        QCOMPARE(bench.document.shown().lineStart(1), 4096);
        QTEST(lines.matches(1), "inSecondPiece");
        QCOMPARE(lines.layout(2).text().runs.front().look.foreground, QRgb(0xFFDC322F));
    }

    void screenReadersGetWhatIsVisible()
    {
        Bench bench(m_folder.path());
        bench.addLines(500);
        QAccessibleInterface *log = QAccessible::queryAccessibleInterface(&bench.view);
        QCOMPARE(log->text(QAccessible::Name), u"Logs"_s);
        QVERIFY(log->text(QAccessible::Value).contains(u"line 499"_s));
        QVERIFY(!log->text(QAccessible::Value).contains(u"line 1\n"_s));
    }

    void searchGoesRound()
    {
        Bench bench(m_folder.path());
        LogSearch search(bench.document);
        connect(&search, &LogSearch::currentMoved, &bench.view.scroll(), &LogScroll::reveal);
        bench.addLines(2000);
        bench.add(u"unfinished line 1999"_s);
        search.setPattern(LogPattern(u"LINE 1999"_s, false, false), 0);
        QTRY_COMPARE(search.count(), 2);
        QTRY_VERIFY(!search.isSearching());
        QCOMPARE(search.currentNumber(), 1);
        search.goOn(true);
        QCOMPARE(search.currentNumber(), 2);
        QVERIFY(bench.view.visibleText().contains(u"unfinished"_s));
        bench.view.scroll().follow();
        search.goOn(false); // in sight already, but it must stay there when text arrives
        QVERIFY(!bench.view.scroll().isFollowing());
        search.goOn(true);
        search.goOn(true);
        QCOMPARE(search.currentNumber(), 1);
        search.goOn(false);
        QCOMPARE(search.currentNumber(), 2);
        // The line goes on: its match is found once, and the next one too.
        bench.add(u" and line 1999\nline 1999\n"_s);
        QTRY_COMPARE(search.count(), 4);
        QCOMPARE(search.currentNumber(), 2);
        // So is what arrives while the text before it is looked at.
        search.setPattern(LogPattern(u"line 1999"_s, true, false), 0);
        bench.document.append(0, "line 1999\n");
        bench.document.commit();
        QTRY_COMPARE(search.count(), 5);
        bench.document.setFilter(LogPattern(u"unfinished"_s, true, false));
        QTRY_COMPARE(search.count(), 2);
        search.setPattern(LogPattern(u"^\\w+ line"_s, true, true), 0);
        QTRY_COMPARE(search.count(), 1);
        search.setPattern(LogPattern(u"("_s, true, true), 0);
        QCOMPARE(search.count(), 0);
        search.goOn(true);
        QCOMPARE(search.currentNumber(), 0);
    }

private:
    QTemporaryDir m_folder;
};

QTEST_MAIN(TestLogView)
#include "tst_log_view.moc"
