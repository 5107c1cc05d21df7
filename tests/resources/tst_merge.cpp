// SPDX-License-Identifier: GPL-3.0-or-later
#include "SampleKind.h"
#include "resources/listing/Merge.h"
#include "resources/listing/ResourceTableModel.h"

#include <QSet>
#include <QTest>

#include <algorithm>
#include <random>
#include <thread>

using namespace tidewright;

namespace {

/// The table as told step by step: mutable rows, each line looked up from the top, positions in a set.
struct LiteralTable
{
    std::vector<std::shared_ptr<SampleItem>> rows;

    void merge(const QString &listing, bool lastLineFirst)
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
            const QStringList fields = line.split(u'\t');
            if (fields.size() != 4) {
                continue;
            }
            const auto found = std::find_if(
                rows.begin(), rows.end(), [&fields](const auto &row) { return row->name == fields[0]; });
            if (found != rows.end()) {
                stale.remove(static_cast<int>(found - rows.begin()));
            } else {
                added.push_back(std::make_shared<SampleItem>(fields[0]));
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

void apply(const MergeResult &result, ResourceTableModel &model)
{
    model.replaceRows(result.changed);
    model.removeRowsAt(result.stale);
    model.appendRows(result.added);
}

QString listingOf(const Rows &rows)
{
    QStringList lines;
    for (const Row &row : rows) {
        const SampleItem &item = sample(*row);
        lines << QStringList{item.name, QString::number(item.count), item.note, item.startTimeString}.join(
            u'\t');
    }
    return lines.join(u'\n');
}

} // namespace

class TestMerge : public QObject
{
    Q_OBJECT

    std::mt19937 m_random{20190402};

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    QString randomListing()
    {
        static const QStringList names{QStringLiteral("web"), QStringLiteral("Web"), QStringLiteral("web-1"),
            QStringLiteral("db"), QString::fromUtf8("größe-日本"), QString(), QStringLiteral("a b"),
            QStringLiteral("cache")};
        static const QStringList broken{QString(), QStringLiteral("web"), QStringLiteral("web\t1\tx"),
            QStringLiteral("web\t1\tx\t\t"), QStringLiteral("\t\t\t\t\t\t"), QStringLiteral("error: no")};
        QStringList lines;
        for (int n = below(12); n > 0; --n) {
            lines << (below(5) == 0
                    ? broken[below(static_cast<int>(broken.size()))]
                    : QStringLiteral("%1\t%2\t%3\t%4")
                          .arg(names[below(static_cast<int>(names.size()))])
                          .arg(below(2))
                          .arg(below(3) ? QString() : QStringLiteral("n%1").arg(below(2)))
                          .arg(below(4) ? QString() : QStringLiteral("2019-04-02T10:00:00Z")));
        }
        return lines.join(u'\n');
    }

    /// What a command on a row does, such as a scale: the row is another one until the next listing says
    /// otherwise.
    void changeOneRow(LiteralTable &expected, ResourceTableModel &model)
    {
        const auto position = static_cast<std::size_t>(below(model.rowCount()));
        auto copy = std::make_shared<SampleItem>(sample(*model.tableItems()[position]));
        expected.rows[position]->count = copy->count = 99;
        const std::pair<std::size_t, Row> change{position, copy};
        model.replaceRows({&change, 1});
    }

private Q_SLOTS:
    void followsTheSteps_data()
    {
        QTest::addColumn<bool>("lastLineFirst");
        QTest::newRow("first to last") << false;
        QTest::newRow("last to first") << true;
    }

    void followsTheSteps()
    {
        QFETCH(bool, lastLineFirst);
        ResourceKind kind = sampleKind();
        kind.lastLineFirst = lastLineFirst;
        ResourceTableModel model(kind);
        LiteralTable expected;
        for (int round = 0; round < 2000; ++round) {
            const QString listing = below(4) ? randomListing() : listingOf(model.tableItems());
            if (model.rowCount() > 0 && below(3) == 0) {
                changeOneRow(expected, model);
            }
            const Rows before = model.tableItems();
            const MergeResult result = mergeListing(kind, listing.toUtf8(), before);
            for (const auto &[position, row] : result.changed) {
                QVERIFY2(!kind.equal(*row, *before[position]), qPrintable(listing));
            }
            apply(result, model);
            expected.merge(listing, lastLineFirst);
            QCOMPARE(model.tableItems().size(), expected.rows.size());
            for (std::size_t i = 0; i < expected.rows.size(); ++i) {
                const SampleItem &row = sample(*model.tableItems()[i]);
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
        ResourceTableModel model(sampleKind());
        std::atomic<int> faults = 0;
        for (int round = 0; round < 60; ++round) {
            Rows fresh;
            for (int i = 0; i < 100; ++i) {
                fresh.push_back(std::make_shared<SampleItem>(QStringLiteral("pod-%1-%2").arg(round).arg(i)));
            }
            model.appendRows(fresh);
            std::atomic<bool> released = false;
            std::thread worker(
                [&faults, &released, kind = model.kind(), snapshot = model.snapshot()]() mutable {
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
                const auto position = static_cast<std::size_t>(below(model.rowCount()));
                auto copy = std::make_shared<SampleItem>(sample(*model.tableItems()[position]));
                copy->count += 1;
                copy->startTimeString = QStringLiteral("2019-04-02T10:00:00Z");
                const std::pair<std::size_t, Row> change{position, copy};
                model.replaceRows({&change, 1});
                model.data(model.index(below(model.rowCount()), 3));
                const std::size_t removed = static_cast<std::size_t>(below(model.rowCount()));
                model.removeRowsAt({&removed, 1});
            }
            if (round % 20 == 19) {
                model.clear();
            }
            worker.join();
        }
        QCOMPARE(faults.load(), 0);
    }
};

QTEST_GUILESS_MAIN(TestMerge)
#include "tst_merge.moc"
