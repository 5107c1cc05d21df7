// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Cluster.h"
#include "api/Options.h"
#include "objects/Seed.h"
#include "server/ApiServer.h"
#include "server/Kubeconfig.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <thread>

#include <sys/prctl.h>
#include <unistd.h>

using namespace tidewright::demo;

namespace {

int fail(const std::string &message, int status)
{
    std::fprintf(stderr, "tidewright-demo-cluster: %s\n", message.c_str());
    return status;
}

sigset_t endSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGHUP);
    return signals;
}

// Streams may be open for ever, so the end of the process is the end of the server.
[[noreturn]] void endOnSignal(const KubeconfigFile &kubeconfig)
{
    const sigset_t signals = endSignals();
    int signal = 0;
    sigwait(&signals, &signal);
    kubeconfig.remove();
    _exit(0);
}

int run(const Options &options)
{
    const auto history = size_t(options.history);
    Cluster harbor("demo-harbor", 11, options.still, history);
    Cluster lighthouse("demo-lighthouse", 23, options.still, history);
    harbor.isMeasured = !options.noMetrics;
    seedHarbor(harbor.store, options.fleetPods);
    seedLighthouse(lighthouse.store);
    if (options.hostile) {
        makeHostile(harbor.store);
    }

    std::unique_ptr<TlsIdentity> identity;
    std::string authority;
    if (options.tls) {
        identity = std::make_unique<TlsIdentity>();
        authority = options.wrongCa ? TlsIdentity().authority() : identity->authority();
    }
    ApiServer server(options, {&harbor, &lighthouse}, identity.get());
    const int port = server.bind(options.port);
    if (port <= 0) {
        return fail("cannot listen on 127.0.0.1:" + std::to_string(options.port), 1);
    }

    KubeconfigFile kubeconfig(options.kubeconfigPath);
    const std::string text
        = kubeconfigText({{harbor.name, "default"}, {lighthouse.name, "default"}}, port, authority);
    if (!kubeconfig.write(text)) {
        return fail("cannot write " + kubeconfig.path() + ": " + std::strerror(errno), 1);
    }

    harbor.movement.start();
    lighthouse.movement.start();
    if (options.changesPerSecond > 0) {
        harbor.load.start(options.changesPerSecond);
    }
    std::thread([&server] { server.run(); }).detach();
    std::printf("ready %s\n", kubeconfig.path().c_str());
    std::fflush(stdout);
    endOnSignal(kubeconfig);
}

} // namespace

int main(int argc, char **argv)
{
    const ParsedOptions parsed = parseOptions({argv + 1, argv + argc});
    if (!parsed.error.empty()) {
        return fail(parsed.error + "\nTry --help.", 2);
    }
    if (parsed.options.help) {
        std::fputs(usage().c_str(), stdout);
        return 0;
    }
    const pid_t parent = getppid();
    if (parsed.options.exitWithParent) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        // The parent may have died before the request took hold.
        if (getppid() != parent) {
            return 0;
        }
    }
    // Blocked before any thread starts, so that only the waiting main thread takes them.
    const sigset_t signals = endSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(parsed.options);
    } catch (const std::exception &error) {
        return fail(error.what(), 1);
    }
}
