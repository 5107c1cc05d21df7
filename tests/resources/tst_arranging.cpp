// SPDX-License-Identifier: GPL-3.0-or-later
#include "SampleKind.h"
#include "resources/kinds/Columns.h"
#include "resources/listing/ArrangingModel.h"

#include <QAbstractItemModelTester>
#include <QDateTime>
#include <QItemSelectionModel>
#include <QScopeGuard>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <random>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

/// How often views are told of a change. A reset counts as many changes: it would lose the selection.
void countSignals(QAbstractItemModel &model, int &count)
{
    QObject::connect(&model, &QAbstractItemModel::layoutChanged, [&count] { ++count; });
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, [&count] { ++count; });
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, [&count] { ++count; });
    QObject::connect(&model, &QAbstractItemModel::dataChanged, [&count] { ++count; });
    QObject::connect(&model, &QAbstractItemModel::modelReset, [&count] { count += 1000; });
}

/// Keys that the standard comparisons understand: what is not a number stands at the end.
SortKey totalKey(SortKey key, Qt::SortOrder order)
{
    constexpr double infinite = std::numeric_limits<double>::infinity();
    const double *number = std::get_if<double>(&key);
    return !number || !std::isnan(*number) ? key : order == Qt::AscendingOrder ? infinite : -infinite;
}

QStringList namesOf(const QModelIndexList &indexes)
{
    QStringList names;
    for (const QModelIndex &index : indexes) {
        names << index.data(ArrangingModel::NameRole).toString();
    }
    return names;
}

constexpr qint64 noon = 1'700'000'000;

ResourceKind withNamespaceColumn(ResourceKind kind)
{
    kind.columns.push_back(namespaceColumn());
    return kind;
}

QStringList expectedNames(const RowStore &model, const QList<SortDescriptor> &sorts, const QString &filter)
{
    std::vector<const KubeTableItem *> rows;
    for (const Row &row : model.rows()) {
        if (row->name.contains(filter, Qt::CaseInsensitive)) {
            rows.push_back(row.get());
        }
    }
    std::stable_sort(rows.begin(), rows.end(), [&](const KubeTableItem *a, const KubeTableItem *b) {
        for (const SortDescriptor &sort : sorts) {
            const auto &sortKey = model.kind().columns[static_cast<std::size_t>(sort.column)].sortKey;
            const SortKey keyA = totalKey(sortKey(*a), sort.order);
            const SortKey keyB = totalKey(sortKey(*b), sort.order);
            if (keyA != keyB) {
                return (keyA < keyB) == (sort.order == Qt::AscendingOrder);
            }
        }
        return false;
    });
    QStringList names;
    for (const KubeTableItem *row : rows) {
        names << row->name;
    }
    return names;
}

} // namespace

class TestArranging : public QObject
{
    Q_OBJECT

    std::mt19937 m_random{7};
    int m_made = 0;

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    void randomFields(SampleItem &row)
    {
        static const QStringList notes{QString(), u"n2"_s, u"n10"_s, u"N10"_s, u"a rather long note 1"_s,
            u"a rather long note 02"_s, u"a rather long note 2"_s};
        row.count = below(7) - 3;
        row.note = notes[below(static_cast<int>(notes.size()))];
        row.startTimeString = below(3) ? u"20%1-01-01T00:00:00Z"_s.arg(10 + below(5)) : QString();
    }

    Rows newRows(int count)
    {
        Rows rows;
        for (; count > 0; --count) {
            const auto row
                = std::make_shared<SampleItem>(u"%1-%2"_s.arg(below(2) ? u"Web" : u"db").arg(++m_made));
            randomFields(*row);
            rows.push_back(row);
        }
        return rows;
    }

    std::vector<std::size_t> somePositions(const RowStore &model)
    {
        std::vector<std::size_t> positions;
        const int step = 1 + below(6);
        for (int i = below(20); i < int(model.rows().size()); i += 1 + below(step)) {
            positions.push_back(static_cast<std::size_t>(i));
        }
        return positions;
    }

    void replaceSome(RowStore &model)
    {
        std::vector<std::pair<std::size_t, Row>> changed;
        for (const std::size_t position : somePositions(model)) {
            // A kind matches rows by name, but the models do not rely on it.
            const QString name = model.rows()[position]->name;
            auto row = std::make_shared<SampleItem>(below(8) ? name : u"7-"_s + name);
            randomFields(*row);
            changed.emplace_back(position, row);
        }
        model.replaceRows(changed);
    }

    void changeSomething(
        RowStore &model, ArrangingModel &arranged, QList<SortDescriptor> &sorts, QString &filter)
    {
        switch (below(7)) {
        case 0:
            model.appendRows(newRows(below(60)));
            break;
        case 1:
            model.removeRowsAt(somePositions(model));
            break;
        case 2:
        case 3:
            replaceSome(model);
            break;
        case 4:
            filter = QStringList{QString(), u"wEb"_s, u"7"_s, u"nothing"_s}[below(4)];
            arranged.setFilter(filter);
            break;
        case 5:
            if (below(10) == 0) {
                model.clear();
            }
            break;
        default:
            sorts.clear();
            for (int levels = below(3); levels > 0; --levels) {
                sorts.append({below(4), below(2) ? Qt::AscendingOrder : Qt::DescendingOrder});
            }
            arranged.setSorts(sorts + QList<SortDescriptor>{{99, Qt::AscendingOrder}});
        }
    }

private Q_SLOTS:
    void arrangesLikeASimpleTable()
    {
        RowStore model(sampleKind());
        ArrangingModel arranged(model);
        QAbstractItemModelTester arrangedTester(
            &arranged, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QItemSelectionModel selection(&arranged);
        QList<SortDescriptor> sorts;
        QString filter;
        int changes = 0;
        countSignals(arranged, changes);
        const auto interfere = [&] { // as a widget in a cell may that loses the focus when it is hidden
            replaceSome(model);
            model.appendRows(newRows(1));
            model.removeRowsAt(somePositions(model));
            model.clear();
            arranged.setFilter(u"nothing"_s);
            arranged.setSorts({{below(4), Qt::DescendingOrder}});
        };
        connect(&arranged, &QAbstractItemModel::rowsAboutToBeRemoved, this, interfere);
        connect(&arranged, &QAbstractItemModel::rowsInserted, this, interfere);
        connect(&arranged, &QAbstractItemModel::layoutAboutToBeChanged, this, interfere);
        connect(&arranged, &QAbstractItemModel::dataChanged, this, interfere);
        for (int round = 0; round < 1500; ++round) {
            const auto snapshot = below(2) ? model.snapshot() : nullptr;
            const Rows before = model.rows();
            std::vector<std::pair<QString, QPersistentModelIndex>> followed;
            for (int row = below(5); row < arranged.rowCount(); row += 1 + below(5)) {
                followed.emplace_back(arranged.arrangedRow(row)->name, arranged.index(row, below(4)));
            }
            if (round % 5 == 0) {
                selection.clear();
                for (int row = 0; row < arranged.rowCount(); row += 1 + below(4)) {
                    selection.select(
                        arranged.index(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
                }
            }
            const QStringList selected = namesOf(selection.selectedRows());
            changes = 0;
            changeSomething(model, arranged, sorts, filter);

            QVERIFY2(changes <= 22, "as many signals as rows");
            QVERIFY(!snapshot || *snapshot == before);
            const QStringList names = expectedNames(model, sorts, filter);
            QCOMPARE(arranged.rowCount(), names.size());
            for (int row = 0; row < arranged.rowCount(); ++row) {
                const QModelIndex index = arranged.index(row, 1);
                QCOMPARE(arranged.arrangedRow(row)->name, names[row]);
                QCOMPARE(namesOf({index}), names.mid(row, 1));
                QCOMPARE(model.rows()[arranged.positionOf(row)], arranged.arrangedRow(row));
                QCOMPARE(model.rows()[model.find({}, names[row]).value()]->name, names[row]);
            }
            const QSet<QString> shown(names.begin(), names.end());
            for (const auto &[name, index] : followed) {
                QVERIFY(!shown.contains(name) || namesOf({index}) == QStringList(name));
            }
            const QStringList stillSelected = namesOf(selection.selectedRows());
            const QSet<QString> now(stillSelected.begin(), stillSelected.end());
            QVERIFY2(now.contains(QSet<QString>(selected.begin(), selected.end()) & shown), "selection lost");
            QVERIFY2(stillSelected.size() <= selected.size(), "rows selected that nobody selected");
        }
    }

    void filterWords_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("labels");
        QTest::addColumn<bool>("isUnderstood");
        const auto row
            = [](const char *filter, const char *shown, const char *labels = "", bool isUnderstood = true) {
                  QTest::newRow(filter) << QString::fromUtf8(filter) << QString::fromLatin1(shown)
                                        << QString::fromLatin1(labels) << isUnderstood;
              };
        row("CART", "cart-1 cart-test");
        row("  cart   -Test ", "cart-1");
        row("far", "db"); // the namespace counts too
        row("-cart -", "db Bill");
        row("ns:far", "db");
        row("-ns:NEAR", "db"); // rows without one are of the namespace that the window shows
        row("ns:=nea", "");
        row("count:0", "cart-test"); // the number, not a digit of it
        row("count:>0", "cart-1 db Bill");
        row("count:>=10", "db Bill");
        row("count:<10 count:>=1", "cart-1");
        row("-count:=10", "cart-1 cart-test Bill");
        row("NOTE:crash", "db");
        row("Note:\"2/2 run\"", "cart-1");
        row("note:=\"2/2 run\"", "");
        row("note:\"2/2 Run", "cart-1"); // being typed
        row("-note:r cart", "cart-test");
        row("age:<1h", "cart-1");
        row("age:>=1h30m", "cart-test"); // one whose age is not known has none
        row("age:>1d", "");
        for (const char *unfinished : {"", "-", "count:", "count:>", "count:>=", "age:<", "age:<1",
                 "note:", "\"", "note:=", "label:", "?"}) {
            row(unfinished, "cart-1 cart-test db Bill");
        }
        row("colour:red", "", "", false);
        row("\"colour:red\"", "");
        row("a:cart", "", "", false);
        row("count:>many", "cart-1 cart-test db Bill", "", false);
        row("age:>1w", "cart-1 cart-test db Bill", "", false);
        row("note:>1", "cart-1 cart-test db Bill", "", false);
        row("label:app=cart cart", "cart-1 cart-test", "app=cart");
        row("label:a label:\"b in (c, d)\" -label:e=f -label:g -label:h==i", "cart-1 cart-test db Bill",
            "a,b in (c, d),e!=f,!g,h!=i");
        row("-label:a!=b", "cart-1 cart-test db Bill", "", false);
    }
    void filterWords()
    {
        QFETCH(QString, filter);
        RowStore store(withNamespaceColumn(sampleKind()));
        const auto add
            = [&store](const char *name, qint64 count, const char *note, const char *nameSpace, int minutes) {
                  const auto item = std::make_shared<SampleItem>(QString::fromLatin1(name));
                  item->count = count;
                  item->note = QString::fromLatin1(note);
                  item->nameSpace = QString::fromLatin1(nameSpace);
                  item->startTimeString = minutes
                      ? QDateTime::fromSecsSinceEpoch(noon - 60 * minutes, Qt::UTC).toString(Qt::ISODate)
                      : QString();
                  const Row added = item;
                  store.appendRows({&added, 1});
              };
        setClockForTesting([] { return static_cast<double>(noon); });
        const auto restore = qScopeGuard([] { setClockForTesting({}); });
        add("cart-1", 1, "2/2 Running", "", 59);
        add("cart-test", 0, "", "", 90);
        add("db", 10, "CrashLoopBackOff", "far", 0);
        add("Bill", 12, "Error", "near", 0);
        ArrangingModel arranged(store);
        arranged.setHomeNamespace(u"near"_s);
        arranged.setFilter(filter);
        QStringList names;
        for (int i = 0; i < arranged.rowCount(); ++i) {
            names << arranged.arrangedRow(i)->name;
        }
        QTEST(names.join(u' '), "shown");
        QTEST(arranged.rowFilter().labelSelector(), "labels");
        QTEST(arranged.rowFilter().note().isEmpty(), "isUnderstood");
        QCOMPARE(arranged.rowFilter().movesWithTime(), filter.startsWith(u"age:") && arranged.rowCount() < 4);
        setClockForTesting([] { return static_cast<double>(noon + 60); });
        store.timePasses(); // the first row has its hour now
        if (filter == u"age:<1h") {
            QCOMPARE(arranged.rowCount(), 0);
        }
    }

    void nothingIsSaidWhenNothingChanges()
    {
        RowStore model(sampleKind());
        model.appendRows(newRows(50));
        ArrangingModel arranged(model);
        arranged.setSorts({{0, Qt::AscendingOrder}});
        arranged.setFilter(u"b"_s);
        const quint64 generation = model.generation();
        int changes = 0;
        countSignals(arranged, changes);
        arranged.setSorts({{0, Qt::AscendingOrder}});
        arranged.setSorts({{0, Qt::AscendingOrder}, {1, Qt::DescendingOrder}}); // the same, as names differ
        arranged.setFilter(u"B"_s);
        model.appendRows({});
        model.replaceRows({});
        const std::vector<std::size_t> beyond{3, 50};
        model.removeRowsAt(beyond);
        QCOMPARE(changes, 0);
        QCOMPARE(model.generation(), generation);
    }

    void changesOfOneRowTouchOneRow()
    {
        RowStore model(sampleKind());
        model.appendRows(newRows(50));
        ArrangingModel arranged(model);
        arranged.setSorts({{0, Qt::DescendingOrder}});
        int changes = 0;
        countSignals(arranged, changes);
        const auto *rows = &model.rows();
        quint64 generation = model.generation();
        model.appendRows(newRows(1));
        const std::size_t position = 20;
        model.removeRowsAt({&position, 1});
        QCOMPARE(changes, 2); // inserted and removed in place
        auto copy = std::make_shared<SampleItem>(sample(*model.rows()[9]));
        copy->count = 1000;
        const std::pair<std::size_t, Row> change{9, copy};
        model.replaceRows({&change, 1});
        QCOMPARE(changes, 3);
        QCOMPARE(&model.rows(), rows); // nobody holds a snapshot: nothing was copied
        const std::vector<std::size_t> scattered{3, 7, 20, 40};
        model.removeRowsAt(scattered);
        QVERIFY(model.generation() > generation);
        model.clear();
        generation = model.generation();
        model.clear(); // a load of before must not be taken for one of now
        QVERIFY(model.generation() > generation);
    }

    void refreshedColumnsAndHeaders()
    {
        auto model = std::make_unique<RowStore>(sampleKind());
        ArrangingModel arranged(*model);
        QCOMPARE(arranged.headerData(3, Qt::Horizontal).toString(), u"AGE"_s); // without any row
        model->appendRows(newRows(5));
        QSignalSpy changed(&arranged, &QAbstractItemModel::dataChanged);
        model->timePasses();
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed[0][0].toModelIndex(), arranged.index(0, 3));
        QCOMPARE(changed[0][1].toModelIndex(), arranged.index(4, 3));
        model.reset();
        QCOMPARE(arranged.rowCount(), 0);
        QVERIFY(!arranged.headerData(3, Qt::Horizontal).isValid());
        arranged.setFilter(u"x"_s);
        arranged.setSorts({{1, Qt::AscendingOrder}});
    }
};

QTEST_GUILESS_MAIN(TestArranging)
#include "tst_arranging.moc"
