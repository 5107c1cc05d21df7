// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/EventStream.h"
#include "server/Options.h"
#include "server/Patch.h"
#include "store/ObjectStore.h"

#include <QTest>

using namespace tidewright::demo;

// Parts of the demo cluster that take text from outside, without a server.
class TestDemoParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void patches_data();
    void patches();
    void badOptionsAreRefused();
    void versionsAreKeptUntilTheyAreForgotten();
    void heldBytesComeInPieces();
};

namespace {

constexpr const char *strategic = "application/strategic-merge-patch+json";
constexpr const char *merge = "application/merge-patch+json";
constexpr const char *steps = "application/json-patch+json";

json configMap(const std::string &name, const json &labels = json::object())
{
    return {{"metadata", {{"name", name}, {"namespace", "n"}, {"labels", labels}}}};
}

} // namespace

void TestDemoParts::patches_data()
{
    QTest::addColumn<QByteArray>("form");
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("patch");
    QTest::addColumn<QByteArray>("after");
    const auto row
        = [](const char *name, const char *form, const char *before, const char *patch, const char *after) {
              QTest::newRow(name) << QByteArray(form) << QByteArray(before) << QByteArray(patch)
                                  << QByteArray(after);
          };
    row("merge replaces lists", merge, R"({"a":[1,2],"b":1})", R"({"a":[3],"b":null})", R"({"a":[3]})");
    row("json patch", steps, R"({"a":{"b":1}})", R"([{"op":"replace","path":"/a/b","value":2}])",
        R"({"a":{"b":2}})");
    row("list by key", strategic, R"({"containers":[{"name":"x","image":"1"},{"name":"y","image":"1"}]})",
        R"({"containers":[{"name":"y","image":"2"}]})",
        R"({"containers":[{"name":"x","image":"1"},{"name":"y","image":"2"}]})");
    row("item deleted", strategic, R"({"env":[{"name":"A","value":"1"},{"name":"B","value":"2"}]})",
        R"({"env":[{"name":"A","$patch":"delete"}]})", R"({"env":[{"name":"B","value":"2"}]})");
    row("item added in order", strategic, R"({"env":[{"name":"B"}]})",
        R"({"$setElementOrder/env":[{"name":"A"},{"name":"B"}],"env":[{"name":"A"}]})",
        R"({"env":[{"name":"A"},{"name":"B"}]})");
    row("service ports by port", strategic, R"({"ports":[{"port":80},{"port":90}]})",
        R"({"ports":[{"port":90,"nodePort":1}]})", R"({"ports":[{"port":80},{"port":90,"nodePort":1}]})");
    row("plain lists are replaced", strategic, R"({"args":["a","b"]})", R"({"args":["c"]})",
        R"({"args":["c"]})");
    row("map replaced", strategic, R"({"m":{"a":1,"b":2}})", R"({"m":{"$patch":"replace","c":3}})",
        R"({"m":{"c":3}})");
    row("keys retained", strategic, R"({"s":{"type":"A","old":1}})",
        R"({"s":{"$retainKeys":["type"],"type":"B"}})", R"({"s":{"type":"B"}})");
    row("values deleted from a list", strategic, R"({"finalizers":["a","b"]})",
        R"({"$deleteFromPrimitiveList/finalizers":["a"]})", R"({"finalizers":["b"]})");
}

void TestDemoParts::patches()
{
    QFETCH(QByteArray, form);
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, patch);
    QFETCH(QByteArray, after);
    const json result
        = applyPatch(form.toStdString(), json::parse(before.toStdString()), json::parse(patch.toStdString()));
    QCOMPARE(QByteArray::fromStdString(toText(result)),
        QByteArray::fromStdString(toText(json::parse(after.toStdString()))));
}

void TestDemoParts::versionsAreKeptUntilTheyAreForgotten()
{
    using namespace std::chrono_literals;
    ObjectStore store(1, 3);
    const ResourceType &type = typeOfKind("ConfigMap");
    const auto namesAt = [&](std::uint64_t version, const std::string &from = {}, size_t limit = 0) {
        const auto page = store.listAt(version, type, {"n", {}, limit, from});
        QByteArray names;
        for (const ObjectPtr &object : page ? page->objects : std::vector<ObjectPtr>()) {
            names += object->name.c_str();
        }
        return page ? names + QByteArray(page->next.empty() ? "" : "+") : QByteArray("forgotten");
    };
    for (const char *name : {"b", "c", "d"}) {
        store.create(type, configMap(name));
    }
    const std::uint64_t first = store.version();
    store.remove(type, "n", "c");
    store.create(type, configMap("a"));
    store.update(type, "n", "b", [](json &object) { object["data"]["k"] = "v"; });
    store.update(type, "n", "b", [](json &) {});
    QCOMPARE(store.version(), first + 3);
    QCOMPARE(namesAt(first), "bcd");
    QCOMPARE(namesAt(first, "n/c", 1), "c+");
    QCOMPARE(namesAt(first + 1), "bd");
    QCOMPARE(namesAt(first + 2), "abd");
    QVERIFY(!store.listAt(first, type, {"n"})->objects[0]->parsed().contains("data"));
    const auto changes = store.changesAfter(first, type, 0ms);
    QVERIFY(changes.has_value());
    QCOMPARE(changes->list.size(), size_t(3));
    QVERIFY(changes->list[0].kind == Change::Kind::Deleted && changes->list[0].object->version == first + 1);
    // Another kind's changes take no room; one more of this kind does.
    store.create(typeOfKind("Secret"), configMap("s"));
    QCOMPARE(namesAt(first), "bcd");
    store.create(type, configMap("e"));
    QCOMPARE(namesAt(first), "forgotten");
    QVERIFY(!store.changesAfter(first, type, 0ms).has_value());
    store.forgetChanges();
    QCOMPARE(namesAt(first + 2), "forgotten");
    QCOMPARE(namesAt(store.version()), "abde");
}

void TestDemoParts::heldBytesComeInPieces()
{
    ObjectStore store(1);
    const ResourceType &type = typeOfKind("ConfigMap");
    const ObjectPtr object = store.create(type, configMap("a", {{"long", std::string(600, 'x')}}));
    Options options;
    options.disturb = "hold:1,end:2";
    Disturbance disturbance(options);
    EventStream stream({{&type, "v1", "n", {}, {}}, false, {}}, store, disturbance);
    QByteArray got;
    httplib::DataSink sink;
    sink.write = [&got](const char *bytes, size_t size) {
        got.append(bytes, qsizetype(size));
        return true;
    };
    sink.is_writable = [] { return true; };
    sink.done = [&got] { got.append('.'); };
    QList<qsizetype> lines;
    for (int i = 0; i < 3; ++i) {
        stream.change("ADDED", object);
        QVERIFY(stream.handOver(sink));
        lines << got.count('\n');
    }
    QCOMPARE(lines, (QList<qsizetype>{0, 2, 2}));
    QVERIFY(got.endsWith('.'));
}

void TestDemoParts::badOptionsAreRefused()
{
    using Arguments = std::vector<std::string>;
    for (const Arguments &arguments :
        {Arguments{"--fast"}, {"--pods"}, {"--port", "12x"}, {"--fail=200"}, {"--disturb=cut:5,burn"},
            {"--disturb", "cut:x"}, {"--disturb", "shuffle:1"}, {"--changes-per-second", "5"}}) {
        const std::string option = arguments[0].substr(0, arguments[0].find('='));
        QVERIFY2(parseOptions(arguments).error.find(option) != std::string::npos, option.c_str());
    }
    QCOMPARE(parseOptions({"--pods=5", "--changes-per-second", "5", "--disturb", "cut,end:3"}).error, "");
}

QTEST_GUILESS_MAIN(TestDemoParts)
#include "tst_demo_parts.moc"
