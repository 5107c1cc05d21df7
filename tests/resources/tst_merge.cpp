// SPDX-License-Identifier: GPL-3.0-or-later
#include "SampleKind.h"
#include "resources/listing/Merge.h"
#include "resources/listing/RowStore.h"

#include <QSet>
#include <QTest>

#include <algorithm>
#include <random>
#include <thread>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

/// The table as told step by step: mutable rows, each line looked up from the top, positions in a set.
struct LiteralTable
{
    std::vector<std::shared_ptr<SampleItem>> rows;

    void merge(const QString &listing, bool lastLineFirst, LineForm form)
    {
        QSet<int> stale;
        for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
            stale.insert(i);
        }
        QStringList lines = listing.isEmpty() ? QStringList() : listing.split(u'\n');
        if (lastLineFirst) {
            std::reverse(lines.begin(), lines.end());
        }
        std::vector<std::shared_ptr<SampleItem>> added;
        for (const QString &line : lines) {
            QStringList fields = line.split(u'\t');
            const QString nameSpace
                = form == LineForm::WithNamespace && fields.size() > 1 ? fields.takeLast() : QString();
            if (fields.size() != 4) {
                continue;
            }
            const auto found = std::find_if(rows.begin(), rows.end(),
                [&](const auto &row) { return row->name == fields[0] && row->nameSpace == nameSpace; });
            if (found != rows.end()) {
                stale.remove(static_cast<int>(found - rows.begin()));
            } else {
                added.push_back(std::make_shared<SampleItem>(fields[0]));
                added.back()->nameSpace = nameSpace;
            }
            const auto row = found != rows.end() ? *found : added.back();
            row->assign(fields[1], fields[2], fields[3]);
        }
        for (int i = static_cast<int>(rows.size()) - 1; i >= 0; --i) {
            if (stale.contains(i)) {
                rows.erase(rows.begin() + i);
            }
        }
        rows.insert(rows.end(), added.begin(), added.end());
    }
};

void apply(const MergeResult &result, RowStore &store)
{
    store.replaceRows(result.changed);
    store.removeRowsAt(result.stale);
    store.appendRows(result.added);
}

QString listingOf(const Rows &rows, LineForm form = LineForm::Plain)
{
    QStringList lines;
    for (const Row &row : rows) {
        const SampleItem &item = sample(*row);
        QStringList fields{item.name, QString::number(item.count), item.note, item.startTimeString};
        if (form == LineForm::WithNamespace) {
            fields << item.nameSpace;
        }
        lines << fields.join(u'\t');
    }
    return lines.join(u'\n');
}

} // namespace

class TestMerge : public QObject
{
    Q_OBJECT

    std::mt19937 m_random{20190402};

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    QString randomListing(LineForm form)
    {
        static const QStringList names{u"web"_s, u"Web"_s, u"web-1"_s, u"db"_s,
            QString::fromUtf8("größe-日本"), QString(), u"a b"_s, u"cache"_s};
        static const QStringList broken{
            QString(), u"web"_s, u"web\t1\tx"_s, u"web\t1\tx\t\t"_s, u"\t\t\t\t\t\t"_s, u"error: no"_s};
        QStringList lines;
        for (int n = below(12); n > 0; --n) {
            lines << (below(5) == 0 ? broken[below(static_cast<int>(broken.size()))]
                                    : u"%1\t%2\t%3\t%4"_s.arg(names[below(static_cast<int>(names.size()))])
                                          .arg(below(2))
                                          .arg(below(3) ? QString() : u"n%1"_s.arg(below(2)))
                                          .arg(below(4) ? QString() : u"2019-04-02T10:00:00Z"_s));
        }
        if (form == LineForm::WithNamespace) {
            for (QString &line : lines) {
                line += QStringLiteral("\tns-%1").arg(below(3));
            }
        }
        return lines.join(u'\n');
    }

    /// What a command on a row does, such as a scale: the row is another one until the next listing says
    /// otherwise.
    void changeOneRow(LiteralTable &expected, RowStore &store)
    {
        const auto position = static_cast<std::size_t>(below(int(store.rows().size())));
        auto copy = std::make_shared<SampleItem>(sample(*store.rows()[position]));
        expected.rows[position]->count = copy->count = 99;
        const std::pair<std::size_t, Row> change{position, copy};
        store.replaceRows({&change, 1});
    }

private Q_SLOTS:
    void followsTheSteps_data()
    {
        QTest::addColumn<bool>("lastLineFirst");
        QTest::addColumn<LineForm>("form");
        QTest::newRow("first to last") << false << LineForm::Plain;
        QTest::newRow("last to first") << true << LineForm::Plain;
        QTest::newRow("of all namespaces") << false << LineForm::WithNamespace;
    }

    void followsTheSteps()
    {
        QFETCH(bool, lastLineFirst);
        QFETCH(LineForm, form);
        ResourceKind kind = sampleKind();
        kind.lastLineFirst = lastLineFirst;
        RowStore store(kind);
        LiteralTable expected;
        for (int round = 0; round < 2000; ++round) {
            const QString listing = below(4) ? randomListing(form) : listingOf(store.rows(), form);
            if (int(store.rows().size()) > 0 && below(3) == 0) {
                changeOneRow(expected, store);
            }
            const Rows before = store.rows();
            const MergeResult result = mergeListing(kind, listing.toUtf8(), before, form);
            for (const auto &[position, row] : result.changed) {
                QVERIFY2(!kind.equal(*row, *before[position]), qPrintable(listing));
            }
            apply(result, store);
            expected.merge(listing, lastLineFirst, form);
            QCOMPARE(store.rows().size(), expected.rows.size());
            for (std::size_t i = 0; i < expected.rows.size(); ++i) {
                const SampleItem &row = sample(*store.rows()[i]);
                QVERIFY2(row == *expected.rows[i], qPrintable(listing));
                QCOMPARE(row.startTimeInterval, expected.rows[i]->startTimeInterval);
                row.startTimeInterval = expected.rows[i]->startTimeInterval = round;
            }
        }
    }

    void skippedLines()
    {
        ResourceKind kind = sampleKind();
        std::vector<std::size_t> fieldCounts;
        QByteArrayList taken;
        kind.lineSkipped
            = [&fieldCounts](QByteArrayView, std::size_t fields) { fieldCounts.push_back(fields); };
        kind.lineTaken = [&taken](QByteArrayView line) { taken << line.toByteArray(); };
        const QByteArray wide = QByteArray(199, 'x') + QString::fromUtf8("😀").toUtf8() + QByteArray(900, 'y');
        const QByteArray listing = "a\t1\t\t\n" + wide + "\n\na\t\t\t\t\nb\t\t\t\n";
        Rows rows;
        for (int repetition = 0; repetition < 2; ++repetition) { // the second time nothing is new
            fieldCounts.clear();
            taken.clear();
            const MergeResult result = mergeListing(kind, listing, rows);
            QCOMPARE(result.lines, std::size_t(5));
            QCOMPARE(result.skippedLines, std::size_t(3));
            QCOMPARE(fieldCounts, (std::vector<std::size_t>{1, 1, 5}));
            QCOMPARE(taken, (QByteArrayList{"a\t1\t\t", "b\t\t\t"}));
            QCOMPARE(result.firstSkippedLine, QString(199, u'x'));
            QCOMPARE(result.added.size(), rows.empty() ? std::size_t(2) : std::size_t(0));
            rows.insert(rows.end(), result.added.begin(), result.added.end());
        }
    }

    /// Workers read the rows that they were given while the table goes on changing.
    void mergesBesideChanges()
    {
        RowStore store(sampleKind());
        std::atomic<int> faults = 0;
        for (int round = 0; round < 60; ++round) {
            Rows fresh;
            for (int i = 0; i < 100; ++i) {
                fresh.push_back(std::make_shared<SampleItem>(u"pod-%1-%2"_s.arg(round).arg(i)));
            }
            store.appendRows(fresh);
            std::atomic<bool> released = false;
            std::thread worker(
                [&faults, &released, kind = store.kind(), snapshot = store.snapshot()]() mutable {
                    for (int i = 0; i < 3; ++i) {
                        const auto result = mergeListing(kind, listingOf(*snapshot).toUtf8(), *snapshot);
                        faults += !result.changed.empty() || !result.stale.empty() || !result.added.empty();
                    }
                    faults += static_cast<int>(std::count(snapshot->begin(), snapshot->end(), nullptr));
                    snapshot.reset();
                    released.store(true, std::memory_order_relaxed); // which orders nothing: the model has to
                });
            while (round % 2 && !released.load(std::memory_order_relaxed)) {
                std::this_thread::yield();
            }
            for (int i = 0; i < 20; ++i) {
                const auto position = static_cast<std::size_t>(below(int(store.rows().size())));
                auto copy = std::make_shared<SampleItem>(sample(*store.rows()[position]));
                copy->count += 1;
                copy->startTimeString = u"2019-04-02T10:00:00Z"_s;
                const std::pair<std::size_t, Row> change{position, copy};
                store.replaceRows({&change, 1});
                store.rows()[static_cast<std::size_t>(below(int(store.rows().size())))]->getAge();
                const std::size_t removed = static_cast<std::size_t>(below(int(store.rows().size())));
                store.removeRowsAt({&removed, 1});
            }
            if (round % 20 == 19) {
                store.clear();
            }
            worker.join();
        }
        QCOMPARE(faults.load(), 0);
    }
};

QTEST_GUILESS_MAIN(TestMerge)
#include "tst_merge.moc"
