// SPDX-License-Identifier: GPL-3.0-or-later
// A live stream against children whose every byte, end and moment a test decides.
#include "SampleKind.h"
#include "platform/threads/MainQueue.h"
#include "resources/decoding/RowOfLine.h"
#include "resources/live/LiveStream.h"

#include <QRegularExpression>
#include <QTest>

#include <map>

using namespace tidewright;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using State = LiveStatus::State;

namespace {

ResourceKind kindOfNumbers()
{
    ResourceKind kind = kindOf<SampleItem>();
    kind.listWord = u"po"_s;
    kind.outputArguments = {u"-o=jsonpath={range .items[*]}{.metadata.name}\t{.v}\n"_s};
    kind.fieldCount = 2;
    kind.assign = [](const Fields &fields, KubeTableItem &item) {
        static_cast<SampleItem &>(item).note = QString::fromUtf8(fields[1]);
    };
    return kind;
}

/// What a table holds that does what batches say. It complains of those that make no sense.
class Table
{
public:
    explicit Table(const ResourceKind &kind)
        : m_kind(kind)
    {
    }

    void apply(const LiveBatch &batch)
    {
        QVERIFY2(batch.removals.empty() || batch.stateComplete || !m_isLoading, "a row goes too early");
        for (const QByteArray &key : batch.removals) {
            QVERIFY2(m_rows.erase(key) == 1, "an unknown row goes");
        }
        for (const LiveUpsert &upsert : batch.upserts) {
            QVERIFY2(upsert.row || m_rows.contains(upsert.key), "an unknown row changes");
            Row &row = m_rows[upsert.key];
            row = upsert.row ? upsert.row : changedRow(m_kind, row, upsert.line);
            QCOMPARE(row->line, upsert.line);
            order += upsert.line.left(upsert.line.indexOf('\t'));
        }
        m_isLoading = (m_isLoading || batch.stateBegun) && !batch.stateComplete;
        ++batches;
    }

    /// "namespace/name=value …", sorted by key.
    QString text() const
    {
        QStringList all;
        for (const auto &[key, row] : m_rows) {
            all.append(QString::fromUtf8(key) + u'=' + static_cast<const SampleItem &>(*row).note);
        }
        return all.join(u' ');
    }

    QByteArrayList order; ///< names, as they came
    int batches = 0;

private:
    const ResourceKind m_kind;
    std::map<QByteArray, Row> m_rows;
    bool m_isLoading = false;
};

/// Children, clock and timers of a test.
class World
{
public:
    struct Child
    {
        QString arguments;
        Shell::PieceHandler piece;
        Shell::EndHandler ended;
        bool isLeft = false;
    };

    LiveMeans means()
    {
        LiveMeans means;
        means.run = [this](const QStringList &arguments, Shell::PieceHandler piece,
                        Shell::EndHandler ended) -> std::shared_ptr<void> {
            auto child
                = std::make_shared<Child>(Child{arguments.join(u' '), std::move(piece), std::move(ended)});
            children.push_back(child);
            return {child.get(), [child](void *) { child->isLeft = true; }};
        };
        means.now = [this] { return now; };
        means.date = [this] { return QDateTime::fromMSecsSinceEpoch(now.count()); };
        means.later = [this](std::chrono::milliseconds delay, std::function<void()> callback) {
            timers.emplace(now + delay, std::move(callback));
        };
        return means;
    }

    Child *child() { return children.empty() || children.back()->isLeft ? nullptr : children.back().get(); }

    void print(QByteArrayView bytes, bool asError = false)
    {
        for (qsizetype begin = 0; child() && begin < bytes.size(); begin += cut) {
            const QByteArray piece = bytes.sliced(begin, std::min(cut, bytes.size() - begin)).toByteArray();
            child()->piece(asError ? QByteArray() : piece, asError ? std::optional(piece) : std::nullopt);
        }
        settle();
    }
    void end(bool isWell)
    {
        if (child()) {
            child()->ended(isWell ? std::nullopt : std::optional(u"The command ended with status 1."_s));
        }
        settle();
    }
    void wait(std::chrono::milliseconds time)
    {
        const auto until = now + time;
        while (!timers.empty() && timers.begin()->first <= until) {
            now = timers.begin()->first;
            const auto callback = timers.extract(timers.begin()).mapped();
            callback();
            settle();
        }
        now = until;
    }
    static void settle() { QCoreApplication::sendPostedEvents(&mainQueue()); }

    qsizetype cut = 1 << 20;
    std::chrono::milliseconds now{1000};
    std::multimap<std::chrono::milliseconds, std::function<void()>> timers;
    std::vector<std::shared_ptr<Child>> children;
};

/// "a=1", "ns/a=1" and "a=1#2" (an object made anew under its name).
QByteArray object(const QString &text, int version = 0)
{
    static const QRegularExpression form(u"^(?:(\\w+)/)?(\\w+)(?:=([^#]*))?(?:#(\\d+))?$"_s);
    const auto match = form.match(text);
    return u"{\"metadata\":{\"namespace\":\"%1\",\"name\":\"%2\",\"uid\":\"%2%4\",\"resourceVersion\":\"%5\"},\"v\":\"%3\"}"_s
        .arg(match.captured(1), match.captured(2), match.captured(3), match.captured(4))
        .arg(version)
        .toUtf8();
}

QByteArray list(int version, const QByteArray &more, const QByteArrayList &objects)
{
    return R"({"kind":"PodList","metadata":{"resourceVersion":")" + QByteArray::number(version)
        + (more.isEmpty() ? QByteArray() : QByteArray("\",\"continue\":\"" + more)) + R"("},"items":[)"
        + objects.join(',') + "]}\n";
}

QByteArray eventOf(const char *type, const QByteArray &object)
{
    return QByteArray("{\"type\":\"") + type + "\",\"object\":" + object + "}\n";
}

const char *word(State state)
{
    constexpr const char *words[] = {"Loading", "Live", "Reconnecting", "Paused", "Refused"};
    return words[static_cast<int>(state)];
}

} // namespace

class tst_live_stream : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void script_data();
    void script();
    void framesAreGathered();
    void lateOutputIsNoNews();
    void letGoAtAnyTime();
};

/// A script is lines of these:
///   list VERSION[+] OBJECT…  the child prints a page, of which there is more with "+", and ends well
///   events WORD…             the child prints +OBJECT, ~OBJECT, -OBJECT, B (a bookmark), S (the one that
///   ends a state),
///                            E410, E500; each has the version behind "@"
///   bytes TEXT, complain TEXT, answered, end, fail
///   wait MS, pause, resume, retry
///   of MS                    the moment as of which the rows are known
///   asks TEXT                a child runs whose arguments contain that; "asks" alone: none runs
///   STATE ROW…               what the table shows
void tst_live_stream::script_data()
{
    QTest::addColumn<QString>("text");
    const QString live = u"list 5 a=1 b=2\nanswered\nLive a=1 b=2\n"_s;
    const QString twice = u"end\nwait 1000\n"_s;
    QTest::newRow("pages")
        << u"asks get --context=c --raw /p/api/v1/namespaces/n/pods?limit=500\nLoading\n"
           "list 5+ a=1 b=2\nLoading a=1 b=2\nasks limit=32000&continue=T%2Bx\nlist 5+ c=3\n"
           "asks limit=32000\nlist 5 d=4\nLoading a=1 b=2 c=3 d=4\n"
           "asks -v=6 --raw /p/api/v1/namespaces/n/pods?watch=1&allowWatchBookmarks=true&resourceVersion=5\n"
           "answered\nLive a=1 b=2 c=3 d=4"_s;
    QTest::newRow("labels") << u"asks limit=500&labelSelector=a%20in%20%28b%29%2C%21c\nlist 5+ a=1\n"
                               "asks continue=T%2Bx&labelSelector=a%20in\nlist 5 b=2\n"
                               "asks resourceVersion=5&labelSelector=a%20in%20%28b%29%2C%21c"_s;
    QTest::newRow("changes") << live
            + u"events ~a=7@6 -b@7 +c=3@8\nwait 33\nLive a=7 c=3\nend\nasks\nwait 1000\n"
              "asks resourceVersion=8\nReconnecting a=7 c=3\nevents B@9\nLive a=7 c=3"_s;
    QTest::newRow("out of the blue") << live
            + u"events ~x=1@6 -y@7 +a=1@8 -b#2@9\nwait 33\nLive a=1 b=2 x=1"_s;
    QTest::newRow("made anew") << live + u"events -a@6 +a=1#2@7 -a#1@8\nwait 33\nLive a=1 b=2"_s;
    QTest::newRow("there and gone in a frame")
        << live + u"events +x=1@6 -x@7 -b@8 +b=3#2@9 -b#2@10\nwait 33\nLive a=1"_s;
    QTest::newRow("equal names")
        << u"list 5 n/a=1 m/a=2\nanswered\nLive m/a=2 n/a=1\nevents -n/a@6\nwait 33\nLive m/a=2"_s;
    QTest::newRow("a server's usual end") << live + u"events B@9\nwait 60000\nend\nasks resourceVersion=9"_s;
    QTest::newRow("forgotten version") << live
            + u"events E410\nasks watch=1&allowWatchBookmarks=true&sendInitialEvents=true&"
              "resourceVersionMatch=NotOlderThan\nanswered\nReconnecting a=1 b=2\nevents +a=1@3 +c=3@2\n"
              "wait 33\nReconnecting a=1 b=2 c=3\nevents B@8 S@9\nLive a=1 c=3\n"
              "events -a@10\nwait 33\nLive c=3\nend\nwait 1000\nasks resourceVersion=10"_s;
    const QString lost = live + u"events E410\nasks sendInitialEvents\n"_s;
    const QString again = u"asks limit=500\nlist 9+ c=3\nasks limit=32000\nlist 9 a=1\nReconnecting a=1 c=3\n"
                          "asks resourceVersion=9\nanswered\nLive a=1 c=3\nevents B@10\nevents E410\n"_s;
    QTest::newRow("no state on a watch") << lost
            + u"complain Error from server (Invalid): sendInitialEvents: Forbidden\nfail\n"_s + again
            + u"asks limit=500"_s;
    QTest::newRow("a state on a watch, cut off")
        << lost + u"events +a=1@3\nend\n"_s + again + u"asks sendInitialEvents"_s;
    QTest::newRow("a state on a watch without an end") << lost
            + u"answered\nevents +a=1@3\nwait 19999\nasks sendInitialEvents\nwait 1\n"_s + again
            + u"asks limit=500"_s;
    QTest::newRow("a state on a watch, paused") << lost
            + u"events +c=3@3\npause\nasks\nresume\nasks sendInitialEvents\nevents +a=3@4 S@9\nLive a=3"_s;
    QTest::newRow("forgotten before the answer") << live
            + u"end\nwait 1000\ncomplain Error from server (Expired): too old\nfail\nasks sendInitialEvents"_s;
    QTest::newRow("forgotten page")
        << u"list 5+ a=1\ncomplain Error from server (Expired): token\nfail\nasks limit=500\n"
           "list 6 b=1\nLoading b=1"_s;
    QTest::newRow("page cut off")
        << u"bytes {\"metadata\":{},\"items\":[{\"metadata\":{\"name\":\"a\"},\"v\":\"1\"},{\"me\n"
           "end\nasks limit=500\nLoading a=1\nlist 5 b=1\nanswered\nLive b=1"_s;
    QTest::newRow("half a line") << live
            + u"events +c=1@6\nbytes {\"type\":\"DELETED\",\"object\":{\"metadata\":{\"na\nend\n"
              "wait 1000\nasks resourceVersion=6\nanswered\nLive a=1 b=2 c=1"_s;
    QTest::newRow("no JSON") << live
            + u"bytes <html>\\n\nasks sendInitialEvents\nbytes x\\n\nasks limit=500\n"
              "list 7 b=2\nbytes x\\n\nasks\nReconnecting b=2\nwait 1000\nasks limit=500\n"
              "list 7 b=2\nbytes x\\n\nwait 2000\nlist 7 b=2\nbytes x\\n\nRefused b=2\nasks"_s;
    QTest::newRow("an error of the server")
        << live + u"events E500@0\nReconnecting a=1 b=2\nasks sendInitialEvents"_s;
    for (const char *final : {"Error from server (Forbidden): no", "error: unknown flag: --raw",
             "F1123 12:38:33.150919 3404 helpers.go:115] Error from server (MethodNotAllowed): no\ngoroutine "
             "1"}) {
        QTest::newRow(final) << u"list 5 a=1 b=2\ncomplain "_s
                + QString::fromLatin1(final).replace(u'\n', u"\\n"_s)
                + u"\nfail\nRefused a=1 b=2\nasks\nwait 999999\nasks"_s;
    }
    QTest::newRow("growing pauses")
        << u"complain Unable to connect\nfail\nReconnecting\nasks\nwait 999\nasks\nwait 1\nasks limit\nfail\n"
           "wait 1999\nasks\nwait 1\nfail\nwait 3999\nasks\nwait 1\nlist 5 a=1 b=2\nfail\nwait 1000\nasks "
           "watch=1\n"
           "answered\nLive a=1 b=2"_s;
    QTest::newRow("tried before its time") << live
            + u"complain Unable to connect\nfail\nretry\nasks resourceVersion=5\nfail\nwait 2000\n"
              "asks resourceVersion=5\nretry\nanswered\nretry\nLive a=1 b=2"_s;
    QTest::newRow("true as of") << u"wait 500\nlist 5 a=1 b=2\nof 1000\nanswered\nof 1500\nwait 500\n"
                                   "events ~a=7@6\nof 2000\nwait 33\ncomplain Unable to connect\nfail\n"
                                   "Reconnecting a=7 b=2\nwait 1000\nfail\nof 2000\nwait 2000\nanswered\n"
                                   "of 5033\nevents E410\nwait 100\nevents +a=1@7\nwait 100\nof 5033\n"
                                   "events S@8\nof 5233\nwait 67\nLive a=1\nevents B@9\nof 5300"_s;
    QTest::newRow("a state on a watch that is none") << lost
            + u"events ~a=1@6\nwait 9999\nevents ~a=2@7\n"_s.repeated(18) + u"wait 9999\n"_s + again
            + u"asks limit=500"_s;
    QTest::newRow("ends at once") << u"list 5 a=1\n"_s + twice
            + u"asks watch\nend\nwait 2000\nasks watch\nend\nRefused a=1\nasks"_s;
    QTest::newRow("held back") << live
            + u"wait 149999\nasks resourceVersion=5\nwait 1\nLive a=1 b=2\nasks limit=500\nlist 7 a=1\nLive "
              u"a=1\n"
              "asks resourceVersion=7\nanswered\nwait 150000\nasks limit=500\nlist 9 c=1\nRefused c=1\nasks"_s;
    QTest::newRow("nothing to say") << live
            + u"wait 150000\nasks limit=500\nlist 7 a=1 b=2\nanswered\nwait 299999\nasks watch=1\nwait 1\n"
              "asks limit=500\nlist 8 a=1 b=2\nanswered\nevents B@9\nwait 149999\nasks watch=1\nLive a=1 b=2"_s;
    QTest::newRow("a watch without an answer")
        << u"list 5 a=1\nwait 150000\nReconnecting a=1\nasks\nwait 1000\nasks resourceVersion=5"_s;
    QTest::newRow("no answer") << u"wait 150000\nReconnecting\nasks\nwait 1000\nasks limit=500"_s;
    QTest::newRow("paused") << live
            + u"events ~a=3@6\npause\nasks\nwait 999999\nPaused a=3 b=2\nresume\nasks resourceVersion=6\n"
              "Reconnecting a=3 b=2\nanswered\nLive a=3 b=2"_s;
    QTest::newRow("paused while loading")
        << u"list 5+ a=1\npause\nresume\nasks limit=500\nlist 6 b=1\nanswered\nLive b=1"_s;
    QTest::newRow("does not fit") << live
            + u"events ~a=x\\ty@6 +c=1\\n2@7\nwait 33\nLive b=2\nevents ~a=4@8\nwait 33\nLive a=4 b=2"_s;
    QTest::newRow("elsewhere")
        << u"complain Error from server (NotFound): no such thing\nfail\nasks --context=c api-resources\n"
           "bytes pods po v2 true Pod list,watch\\n\nfail\nasks /p/api/v2/namespaces/n/pods?limit=500\n"
           "complain Error from server (NotFound): no\nfail\nRefused\nasks"_s;
}

void tst_live_stream::script()
{
    QFETCH(QString, text);
    for (const qsizetype cut : {qsizetype(1), qsizetype(7), qsizetype(1) << 20}) {
        World world;
        world.cut = cut;
        Table table(kindOfNumbers());
        const QString server = u"https://host/p#%1%2"_s.arg(cut).arg(quintptr(QTest::currentDataTag()));
        const QString labels
            = QByteArrayView(QTest::currentDataTag()) == "labels" ? u"a in (b),!c"_s : QString();
        LiveStream stream(kindOfNumbers(), {u"c"_s, server, u"n"_s, labels}, world.means());
        connect(&stream, &LiveStream::batchReady, this, [&](const LiveBatch &batch) { table.apply(batch); });
        stream.start();
        for (const QString &step : text.split(u'\n')) {
            const QString verb = step.section(u' ', 0, 0);
            const QString rest = step.section(u' ', 1).replace(u"\\n"_s, u"\n"_s).replace(u"\\t"_s, u"\t"_s);
            const QStringList words = step.split(u' ').mid(1);
            if (verb == u"list") {
                QByteArrayList objects;
                for (const QString &word : words.mid(1)) {
                    objects.append(object(word));
                }
                const bool hasMore = words[0].endsWith(u'+');
                world.print(list(words[0].chopped(hasMore).toInt(), hasMore ? "T+x" : "", objects));
                world.end(true);
            } else if (verb == u"events") {
                static const std::map<QChar, const char *> types{{u'+', "ADDED"}, {u'~', "MODIFIED"},
                    {u'-', "DELETED"}, {u'B', "BOOKMARK"}, {u'S', "BOOKMARK"}};
                for (const QString &word : words) {
                    QByteArray thing = object(word.section(u'@', 0, 0).mid(1), word.section(u'@', 1).toInt());
                    if (word[0] == u'S') {
                        thing.replace("{\"namespace",
                            R"({"annotations":{"k8s.io/initial-events-end":"true"},"namespace)");
                    }
                    world.print(word[0] == u'E'
                            ? eventOf("ERROR", QByteArray("{\"code\":" + word.mid(1, 3).toLatin1() + '}'))
                            : eventOf(types.at(word[0]), thing));
                }
            } else if (verb == u"bytes") {
                world.print(rest.toUtf8());
            } else if (verb == u"complain") {
                world.print(
                    QByteArray(
                        "I1123 12:38:30.589742    3355 helpers.go:246] server response: [{\n  (Gone)\n}]\n"
                        + rest.toUtf8()),
                    true);
            } else if (verb == u"answered") {
                world.print("I1123 12:38:30.589522 3355 round_trippers.go:632] \"Response\" verb=\"GET\" "
                            "url=\"http://h/pods?watch=1\" status=\"200 OK\" milliseconds=3\n",
                    true);
            } else if (verb == u"end" || verb == u"fail") {
                world.end(verb == u"end");
            } else if (verb == u"wait") {
                world.wait(std::chrono::milliseconds(rest.toInt()));
            } else if (verb == u"pause") {
                stream.pause();
                world.wait(33ms);
            } else if (verb == u"resume") {
                stream.resume();
            } else if (verb == u"retry") {
                stream.retryNow();
            } else if (verb == u"of") {
                QCOMPARE(stream.status().asOf.toMSecsSinceEpoch(), rest.toLongLong());
            } else if (verb == u"asks") {
                QCOMPARE(world.child() != nullptr, !rest.isEmpty());
                QVERIFY2(rest.isEmpty() || world.child()->arguments.contains(rest),
                    qPrintable(world.child() ? world.child()->arguments : rest));
            } else {
                QString rows = table.text();
                rows.replace(QRegularExpression(u"(^| )/"_s), u"\\1"_s);
                QCOMPARE(
                    QString::fromLatin1(word(stream.status().state)) + (rows.isEmpty() ? u""_s : u' ' + rows),
                    step);
                QVERIFY(verb != u"Refused" || !stream.status().reason.isEmpty());
            }
            if (QTest::currentTestFailed()) {
                qWarning("at “%s”, pieces of %lld bytes", qPrintable(step), static_cast<long long>(cut));
                return;
            }
        }
    }
}

/// Rows come in the listing's order, a frame's changes at once.
void tst_live_stream::framesAreGathered()
{
    World world;
    Table table(kindOfNumbers());
    LiveStream stream(kindOfNumbers(), {{}, u"https://frames"_s, u"n"_s}, world.means());
    connect(&stream, &LiveStream::batchReady, this, [&](const LiveBatch &batch) { table.apply(batch); });
    stream.start();
    world.print(list(5, {}, {object(u"z=1"_s), object(u"b=1"_s), object(u"m=1"_s)}));
    world.end(true);
    QCOMPARE(table.order.join(), "zbm");
    const int before = table.batches;
    world.wait(100ms);
    for (int i = 0; i < 1600; ++i) { // a change each 0.1 ms
        world.print(eventOf("MODIFIED", object(u"z=%1"_s.arg(i + 2), i + 6)));
        world.wait(std::chrono::milliseconds(i % 10 == 0));
    }
    world.wait(33ms);
    QVERIFY2(table.batches - before <= 6, qPrintable(QString::number(table.batches - before)));
    QCOMPARE(table.text(), u"/b=1 /m=1 /z=1601"_s);
    world.print(eventOf("MODIFIED", object(u"z=1601"_s, 9999))); // nothing of it is shown
    world.wait(100ms);
    QVERIFY2(table.batches - before <= 6, "a batch about nothing");
}

/// What a child had printed before it was left must not undo what its successor told.
void tst_live_stream::lateOutputIsNoNews()
{
    World world;
    Table table(kindOfNumbers());
    LiveStream stream(kindOfNumbers(), {{}, u"https://late"_s, u"n"_s}, world.means());
    connect(&stream, &LiveStream::batchReady, this, [&](const LiveBatch &batch) { table.apply(batch); });
    stream.start();
    world.print(list(5, {}, {object(u"a=1"_s)}));
    world.end(true);
    const auto earlier = world.children.back();
    stream.pause();
    stream.resume();
    world.print(eventOf("DELETED", object(u"a=1"_s, 6)));
    earlier->piece(eventOf("MODIFIED", object(u"a=2"_s, 5)), std::nullopt);
    earlier->ended(u"killed"_s);
    world.wait(100ms);
    QCOMPARE(table.text(), QString());
    QVERIFY(world.child() && world.children.back() != earlier);
}

void tst_live_stream::letGoAtAnyTime()
{
    for (int step = 0; step < 4; ++step) {
        World world;
        auto stream = std::make_unique<LiveStream>(
            kindOfNumbers(), LivePlace{{}, u"https://gone"_s, u"n"_s}, world.means());
        connect(stream.get(), &LiveStream::batchReady, this, [&] {
            if (step == 0) {
                stream.reset();
            }
        });
        connect(stream.get(), &LiveStream::statusChanged, this, [&] {
            if (step == 1 && stream->status().state == State::Live) {
                stream.reset();
            }
        });
        stream->start();
        world.print(list(5, {}, {object(u"a=1"_s)}));
        if (step == 2) {
            stream.reset();
        }
        world.end(true);
        world.print(eventOf("ADDED", object(u"b=1"_s, 6)));
        stream.reset();
        const auto last = world.children.back();
        QVERIFY(last->isLeft);
        last->piece(eventOf("ADDED", object(u"c=1"_s, 7)), std::nullopt); // it was on its way
        last->ended(std::nullopt);
        world.wait(1h);
        QVERIFY(world.children.back() == last);
    }
}

QTEST_MAIN(tst_live_stream)
#include "tst_live_stream.moc"
