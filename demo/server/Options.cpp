// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/Options.h"

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
        || value > option.most)
        return name + " needs a number from " + std::to_string(option.least) + " to "
            + std::to_string(option.most) + ", not \"" + text + "\"";
    option.store(options, value);
    return {};
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
            continue;
        }
        if (name != "--kubeconfig" && !valueOptions().contains(name)) {
            parsed.error = "unknown option \"" + arguments[i] + "\"";
        } else if (equals == std::string::npos && i + 1 == arguments.size()) {
            parsed.error = name + " needs a value";
        } else {
            const std::string value
                = equals == std::string::npos ? arguments[++i] : arguments[i].substr(equals + 1);
            if (name == "--kubeconfig")
                parsed.options.kubeconfigPath = value;
            else
                parsed.error = storeNumber(name, value, parsed.options);
        }
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
           "  --still             nothing moves by itself; what follows from a change happens at once\n"
           "  --log-rate N        log lines per second in total over all open streams\n"
           "  --latency MS        wait that long before every answer\n"
           "  --fail CODE         answer every request with that HTTP status\n"
           "  --hang              accept requests and never answer\n"
           "  --tls               serve HTTPS with a certificate made at start\n"
           "  --wrong-ca          as --tls, but the kubeconfig names another authority\n"
           "  --exit-with-parent  end when the parent process ends\n"
           "  --help              show this text\n";
}

} // namespace tidewright::demo
