// SPDX-License-Identifier: GPL-3.0-or-later
#include "objects/Seed.h"

#include <set>

namespace tidewright::demo {

namespace {

constexpr size_t hugeText = 1'000'000;
constexpr size_t hugeObject = 64'000'000;
constexpr int crowd = 10'000;

/// Each as the name of an object of every kind, and in turn as every text that a server may choose.
const std::vector<std::string> &texts()
{
    static const std::vector<std::string> table{
        "--all",
        "-oyaml",
        "<img src=\"/dev/zero\"><s>",
        "<a href=\"file:///etc/passwd\">&nbsp;&amp;</a>",
        "$(touch hostile-was-run)`touch hostile-was-run`;touch hostile-was-run;'\"",
        "&a &&b %1 %2 %n %s",
        "../../../../tmp/hostile-was-written",
        "two\nlines\tand\ta\rtab",
        "\x1b]0;title\a\x1b[31m\x1b]8;;http://x\x1b\\keys\x03\x08\x7f\xc2\x9b",
        "\u202egnp.exe\u2066\u200f\u2028\u2029\ufdd0\ufffc",
        "=cmd|' /C calc'!A0",
        "combining" +
            [] {
                std::string marks;
                for (int i = 0; i < 500; ++i) {
                    marks += "\u0301";
                }
                return marks;
            }(),
        std::string(hugeText, 'x'),
    };
    return table;
}

/// What the protocol itself asks for, or what has no room for a text.
bool isFixed(const std::string &key)
{
    static const std::set<std::string> keys{"kind", "apiVersion", "uid", "resourceVersion",
        "creationTimestamp", "deletionTimestamp", "namespace", "controller"};
    return keys.contains(key) || key.ends_with("Time") || key.ends_with("Timestamp");
}

/// Fills every text of an object, beginning with the given one of the table.
class Filling
{
public:
    explicit Filling(size_t first)
        : m_next(first)
    {
    }

    void fill(json &value)
    {
        if (value.is_string()) {
            value = next();
        } else if (value.is_array()) {
            for (json &each : value) {
                fill(each);
            }
        } else if (value.is_object()) {
            for (auto each = value.begin(); each != value.end(); ++each) {
                if (!isFixed(each.key())) {
                    fill(each.value());
                }
            }
        }
    }

private:
    /// Not the huge one, which would make each object one of many megabytes.
    const std::string &next() { return texts()[m_next++ % (texts().size() - 1)]; }

    size_t m_next;
};

json hostileCopy(const StoredObject &model, size_t number)
{
    json copy = model.parsed();
    Filling(number).fill(copy);
    json &metadata = copy["metadata"];
    metadata["name"] = texts()[number];
    metadata["labels"] = {{"hostile", "yes"}, {texts()[number % 10], texts()[(number + 1) % 10]}};
    metadata.erase("uid");
    metadata.erase("ownerReferences");
    for (const char *text : {"message", "reason"}) { // of events, in cells of their own
        if (copy.contains(text)) {
            copy[text] = texts()[(number + texts().size() - 1) % texts().size()];
        }
    }
    return copy;
}

/// One that a tenant may make: as many containers as fit into a megabyte and a half.
json crowdedPod(const StoredObject &model)
{
    json pod = model.parsed();
    pod["metadata"] = {{"name", "crowd"}, {"namespace", "default"}};
    json containers = json::array();
    json statuses = json::array();
    for (int i = 0; i < crowd; ++i) {
        const std::string name = "container-" + std::to_string(i);
        containers.push_back({{"name", name}, {"image", "i"}});
        statuses.push_back({{"name", name}, {"ready", true}, {"restartCount", 0}});
    }
    pod["spec"]["containers"] = containers;
    pod["status"]["containerStatuses"] = statuses;
    return pod;
}

json hugeConfigMap()
{
    json data = json::object();
    std::string lines;
    while (lines.size() < hugeObject / 2) {
        lines += "line " + std::to_string(lines.size()) + " <b>&amp;\u202e\n";
    }
    data["lines"] = lines;
    data["one-line"] = std::string(hugeObject / 2, 'y');
    return {{"metadata", {{"name", "huge"}, {"namespace", "default"}}}, {"data", data}};
}

} // namespace

void makeHostile(ObjectStore &store)
{
    const std::set<std::string> untouched{
        "CustomResourceDefinition", "ControllerRevision"}; // what is served, and what nobody is shown
    for (const ResourceType &type : resourceTypes()) {
        const std::vector<ObjectPtr> before = store.all(type);
        if (before.empty() || untouched.contains(type.kind)) {
            continue;
        }
        for (const ObjectPtr &each : before) {
            if (type.kind != "Namespace" || each->name != "default") {
                store.remove(type, each->ns, each->name);
            }
        }
        for (size_t number = 0; number < texts().size(); ++number) {
            json copy = hostileCopy(*before.front(), number);
            if (!before.front()->ns.empty()) {
                copy["metadata"]["namespace"] = "default";
            }
            store.create(type, std::move(copy));
        }
        if (type.kind == "Pod") {
            store.create(type, crowdedPod(*before.front()));
        } else if (type.kind == "ConfigMap") {
            store.create(type, hugeConfigMap());
        }
    }
}

} // namespace tidewright::demo
