// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Options.h"

#include "api/AccessPolicy.h"
#include "api/StreamFaults.h"
#include "store/ApiError.h"

#include <charconv>
#include <map>

namespace tidewright::demo {

namespace {

struct ValueOption
{
    long long least;
    long long most;
    void (*store)(Options &, long long);
};

const std::map<std::string, ValueOption> &valueOptions()
{
    static const std::map<std::string, ValueOption> table{
        {"--port", {0, 65535, [](Options &o, long long v) { o.port = int(v); }}},
        {"--pods", {0, 1000000, [](Options &o, long long v) { o.fleetPods = int(v); }}},
        {"--latency", {0, 600000, [](Options &o, long long v) { o.latencyMs = int(v); }}},
        {"--fail", {400, 599, [](Options &o, long long v) { o.failCode = int(v); }}},
        {"--changes-per-second", {1, 10000, [](Options &o, long long v) { o.changesPerSecond = int(v); }}},
        {"--history", {1, 10000000, [](Options &o, long long v) { o.history = int(v); }}},
        {"--bookmark-interval", {1, 86400000, [](Options &o, long long v) { o.bookmarkMs = int(v); }}},
        {"--log-rate", {1, 10000000, [](Options &o, long long v) { o.logRate = double(v); }}},
    };
    return table;
}

const std::map<std::string, void (*)(Options &)> &flagOptions()
{
    static const std::map<std::string, void (*)(Options &)> table{
        {"--hang", [](Options &o) { o.hang = true; }},
        {"--tls", [](Options &o) { o.tls = true; }},
        {"--wrong-ca", [](Options &o) { o.tls = o.wrongCa = true; }},
        {"--still", [](Options &o) { o.still = true; }},
        {"--no-metrics", [](Options &o) { o.noMetrics = true; }},
        {"--hostile", [](Options &o) { o.hostile = o.still = true; }},
        {"--exit-with-parent", [](Options &o) { o.exitWithParent = true; }},
        {"--help", [](Options &o) { o.help = true; }},
    };
    return table;
}

std::string storeNumber(const std::string &name, const std::string &text, Options &options)
{
    const ValueOption &option = valueOptions().at(name);
    long long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < option.least
        || value > option.most) {
        return name + " needs a number from " + std::to_string(option.least) + " to "
            + std::to_string(option.most) + ", not \"" + text + "\"";
    }
    option.store(options, value);
    return {};
}

// Returns what is wrong with it, if anything.
std::string storeValue(const std::string &name, const std::string &value, Options &options)
{
    if (name == "--kubeconfig") {
        options.kubeconfigPath = value;
        return {};
    }
    if (name != "--disturb" && name != "--may-not") {
        return storeNumber(name, value, options);
    }
    (name == "--disturb" ? options.disturb : options.mayNot) = value;
    try {
        name == "--disturb" ? void(FaultPlan(value)) : void(AccessPolicy(value));
    } catch (const ApiError &error) {
        return name + ": " + error.what();
    }
    return {};
}

bool takesValue(const std::string &name)
{
    return name == "--kubeconfig" || name == "--disturb" || name == "--may-not"
        || valueOptions().contains(name);
}

} // namespace

ParsedOptions parseOptions(const std::vector<std::string> &arguments)
{
    ParsedOptions parsed;
    for (size_t i = 0; i < arguments.size() && parsed.error.empty(); ++i) {
        // Both "--port 8080" and "--port=8080" are taken.
        const size_t equals = arguments[i].find('=');
        const std::string name = arguments[i].substr(0, equals);
        if (const auto flag = flagOptions().find(name);
            flag != flagOptions().end() && equals == std::string::npos) {
            flag->second(parsed.options);
        } else if (!takesValue(name)) {
            parsed.error = "unknown option \"" + arguments[i] + "\"";
        } else if (equals == std::string::npos && i + 1 == arguments.size()) {
            parsed.error = name + " needs a value";
        } else {
            const std::string value
                = equals == std::string::npos ? arguments[++i] : arguments[i].substr(equals + 1);
            parsed.error = storeValue(name, value, parsed.options);
        }
    }
    if (parsed.error.empty() && parsed.options.changesPerSecond > 0 && parsed.options.fleetPods == 0) {
        parsed.error = "--changes-per-second changes the pods of --pods N, which is missing";
    }
    return parsed;
}

std::string usage()
{
    return "Usage: tidewright-demo-cluster [options]\n"
           "A small Kubernetes API server on loopback with made-up objects. It writes a kubeconfig with the\n"
           "contexts demo-harbor and demo-lighthouse, then prints \"ready PATH\" on one line.\n\n"
           "  --kubeconfig PATH   where to write the kubeconfig (default: a private temporary folder)\n"
           "  --port N            port to listen on (default 0: any free one)\n"
           "  --pods N            N more pods in namespace fleet of demo-harbor\n"
           "  --changes-per-second N\n"
           "                      that many of these pods change, go or come each second, also with --still\n"
           "  --still             nothing else moves by itself; what follows from a change happens at once\n"
           "  --hostile           demo-harbor has names and texts of a server that means harm; implies "
           "--still\n"
           "  --no-metrics        no cluster tells what pods and nodes use (kubectl top)\n"
           "  --history N         changes of each kind that watches and pages can go back (default 10000)\n"
           "  --bookmark-interval MS\n"
           "                      between the bookmarks of a watch (default 60000)\n"
           "  --log-rate N        log lines per second in total over all open streams\n"
           "  --latency MS        wait that long before every answer\n"
           "  --fail CODE         answer every request with that HTTP status\n"
           "  --hang              accept requests and never answer\n"
           "  --tls               serve HTTPS with a certificate made at start\n"
           "  --wrong-ca          as --tls, but the kubeconfig names another authority\n"
           "  --may-not \"VERB RESOURCE, ...\"\n"
           "                      what the user is refused, such as \"delete pods, create pods/exec\"; * is "
           "any\n"
           "  --exit-with-parent  end when the parent process ends\n"
           "  --help              show this text\n"
           "  --disturb KIND[:N][,KIND[:N]...]\n"
           "                      what befalls watches. N counts the changes that a stream tells, not those "
           "of\n"
           "                      its first state; in brackets what it is when not given. Several that end "
           "a\n"
           "                      stream take turns, each new stream the next.\n"
        + faultUsage();
}

} // namespace tidewright::demo
