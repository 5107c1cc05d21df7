// SPDX-License-Identifier: GPL-3.0-or-later
#include "logs/LogVoice.h"
#include "schema/Schema.h"
#include "server/Patch.h"
#include "server/ProtobufBody.h"
#include "server/RequestPath.h"
#include "server/Validation.h"
#include "store/ApiError.h"
#include "store/ObjectStore.h"
#include "store/Selector.h"

#include <QTest>

using namespace tidewright::demo;

// Parts of the demo cluster that take text from outside, without a server.
class TestDemoParts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void patches_data();
    void patches();
    void refusedPatches_data();
    void refusedPatches();
    void selectors_data();
    void selectors();
    void paths_data();
    void paths();
    void protobufGarbageIsRefused_data();
    void protobufGarbageIsRefused();
    void schemaNamesOnlyKnownTypes();
    void watchersSeeEveryChangeOrAreToldToStartAgain();
    void pagesSurviveRemovals();
};

namespace {

constexpr const char *strategic = "application/strategic-merge-patch+json";
constexpr const char *merge = "application/merge-patch+json";
constexpr const char *steps = "application/json-patch+json";

json configMap(const std::string &name, const json &labels = json::object())
{
    return {{"metadata", {{"name", name}, {"namespace", "n"}, {"labels", labels}}}};
}

int codeOf(const std::function<void()> &refused)
{
    try {
        refused();
    } catch (const ApiError &error) {
        return error.code();
    }
    return 0;
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

void TestDemoParts::refusedPatches_data()
{
    QTest::addColumn<QByteArray>("form");
    QTest::addColumn<QByteArray>("patch");
    QTest::addColumn<int>("code");
    QTest::newRow("apply") << QByteArray("application/apply-patch+yaml") << QByteArray("{}") << 415;
    QTest::newRow("no path") << QByteArray(steps) << QByteArray(R"([{"op":"remove","path":"/x/y"}])") << 422;
    QTest::newRow("no operation") << QByteArray(steps) << QByteArray(R"({"op":1})") << 422;
    QTest::newRow("not an object") << QByteArray(merge) << QByteArray("[1]") << 400;
    QTest::newRow("item without key")
        << QByteArray(strategic) << QByteArray(R"({"containers":[{"image":"x"}]})") << 422;
    QTest::newRow("item not an object") << QByteArray(strategic) << QByteArray(R"({"env":["x"]})") << 422;
}

void TestDemoParts::refusedPatches()
{
    QFETCH(QByteArray, form);
    QFETCH(QByteArray, patch);
    QFETCH(int, code);
    const auto refused = [&] {
        applyPatch(form.toStdString(), {{"env", 1}}, json::parse(patch.toStdString()));
    };
    QCOMPARE(codeOf(refused), code);
}

void TestDemoParts::selectors_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("matching"); // of a, b and c below; "!" when refused
    QTest::newRow("none") << QByteArray("") << QByteArray("abc");
    QTest::newRow("equals") << QByteArray("app=web") << QByteArray("ab");
    QTest::newRow("double equals and not") << QByteArray("app==web,tier!=db") << QByteArray("a");
    QTest::newRow("not equal takes objects without the label") << QByteArray("app!=web") << QByteArray("c");
    QTest::newRow("in") << QByteArray("tier in (db, cache),app") << QByteArray("b");
    QTest::newRow("not in") << QByteArray("tier notin (db)") << QByteArray("ac");
    QTest::newRow("missing") << QByteArray("!app") << QByteArray("c");
    QTest::newRow("open bracket") << QByteArray("tier in (db") << QByteArray("!");
    QTest::newRow("no key") << QByteArray("=web") << QByteArray("!");
    QTest::newRow("words") << QByteArray("app is web") << QByteArray("!");
}

void TestDemoParts::selectors()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, matching);
    ObjectStore store(1);
    const ResourceType &type = typeOfKind("ConfigMap");
    store.create(type, configMap("a", {{"app", "web"}}));
    store.create(type, configMap("b", {{"app", "web"}, {"tier", "db"}}));
    store.create(type, configMap("c"));
    QByteArray found;
    const auto look = [&] {
        const Selector selector = Selector::ofLabels(text.toStdString());
        const auto filter = [&](const StoredObject &object) { return selector.matches(object); };
        for (const ObjectPtr &object : store.list(type, "n", filter).objects)
            found += object->name.c_str();
    };
    if (matching == "!")
        QCOMPARE(codeOf(look), 400);
    else
        look();
    QCOMPARE(found, matching == "!" ? QByteArray() : matching);
}

void TestDemoParts::paths_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("meaning"); // kind namespace name subresource
    const auto row = [](const char *path, const char *meaning) {
        QTest::newRow(path) << QByteArray(path) << QByteArray(meaning);
    };
    row("/api/v1/pods", "Pod   ");
    row("/api/v1/namespaces/shop/pods/x/log", "Pod shop x log");
    row("/api/v1/namespaces", "Namespace   ");
    row("/api/v1/namespaces/pods", "Namespace  pods ");
    row("/api/v1/namespaces/shop/status", "Namespace  shop status");
    row("/apis/apps/v1/namespaces/a/deployments/d/scale", "Deployment a d scale");
    row("/apis/batch/v1beta1/cronjobs", "CronJob   ");
    row("/apis/batch/v1beta1/jobs", "");
    row("/api/v1/namespaces/shop/pods/x/log/more", "");
    row("/apis", "");
    row("/api/v2/pods", "");
}

void TestDemoParts::paths()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, meaning);
    const auto parsed = parseResourcePath(splitPath(path.toStdString()));
    const std::string found = parsed
        ? parsed->type->kind + ' ' + parsed->ns + ' ' + parsed->name + ' ' + parsed->subresource
        : std::string();
    QCOMPARE(QByteArray::fromStdString(found), meaning);
}

void TestDemoParts::protobufGarbageIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("code");
    const QByteArray magic("k8s\0", 4);
    QTest::newRow("empty") << QByteArray() << 400;
    QTest::newRow("no magic") << QByteArray("{}") << 400;
    QTest::newRow("length beyond the end") << magic
            + QByteArray("\x12\x7f"
                         "ab") << 400;
    QTest::newRow("endless number") << magic + QByteArray(20, '\xff') << 400;
    QTest::newRow("group") << magic + QByteArray("\x0b") << 400;
    QTest::newRow("no kind") << magic << 415;
    QTest::newRow("kind that is no object") << magic + QByteArray("\x0a\x06\x12\x04Time") << 415;
}

void TestDemoParts::protobufGarbageIsRefused()
{
    QFETCH(QByteArray, body);
    QFETCH(int, code);
    QCOMPARE(codeOf([&] { objectFromProtobuf(body.toStdString()); }), code);
}

void TestDemoParts::schemaNamesOnlyKnownTypes()
{
    const auto isKnown = [](const FieldType &type) {
        const FieldType &inner = type.items.empty() ? type : type.items.front();
        return inner.shape != FieldType::Shape::Object || schemaTypes().contains(inner.name);
    };
    for (const auto &[name, type] : schemaTypes()) {
        for (const SchemaField &field : type.fields)
            QVERIFY2(isKnown(field.type), (name + '.' + field.name).c_str());
    }
    for (const ResourceType &type : resourceTypes())
        QVERIFY2(schemaTypes().contains(type.kind), type.kind.c_str());
}

void TestDemoParts::watchersSeeEveryChangeOrAreToldToStartAgain()
{
    using namespace std::chrono_literals;
    ObjectStore store(1);
    const ResourceType &type = typeOfKind("ConfigMap");
    const std::uint64_t start = store.version();
    store.create(type, configMap("a"));
    store.update(type, "n", "a", [](json &object) { object["data"]["k"] = "v"; });
    store.update(type, "n", "a", [](json &) {});
    store.remove(type, "n", "a");
    const auto changes = store.changesAfter(start, 0ms);
    QVERIFY(changes.has_value());
    QCOMPARE(changes->size(), size_t(3));
    QVERIFY(changes->at(2).kind == Change::Kind::Deleted);
    QVERIFY(store.changesAfter(store.version(), 1ms)->empty());
    for (int i = 0; i < 6000; ++i)
        store.update(type, "n", store.create(type, configMap(std::to_string(i)))->name, [](json &) {});
    QVERIFY(!store.changesAfter(start, 0ms).has_value());
}

void TestDemoParts::pagesSurviveRemovals()
{
    ObjectStore store(1);
    const ResourceType &type = typeOfKind("ConfigMap");
    for (const char *name : {"a", "b", "c", "d"})
        store.create(type, configMap(name));
    const ListPage first = store.list(type, "n", {}, 2);
    store.remove(type, "n", "c"); // the one that the next page would start with
    const ListPage second = store.list(type, "n", {}, 2, first.next);
    QCOMPARE(second.objects.size(), size_t(1));
    QCOMPARE(second.objects[0]->name.c_str(), "d");
    QVERIFY(second.next.empty());
}

QTEST_GUILESS_MAIN(TestDemoParts)
#include "tst_demo_parts.moc"
