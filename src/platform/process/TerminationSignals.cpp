// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/TerminationSignals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace tidewright {

namespace {

constexpr std::array handledSignals{SIGTERM, SIGINT, SIGHUP};

std::atomic<const WakeSignal *> wake = nullptr;

/// Async-signal-safe, like all that it calls.
void handle(int)
{
    const int savedError = errno;
    for (const int number : handledSignals) {
        ::signal(number, SIG_DFL); // the next one ends what does not end by itself
    }
    if (const WakeSignal *signal = wake) {
        signal->signal();
    }
    errno = savedError;
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
    , m_notifier(m_wake.descriptor(), QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::drain);
    wake = &m_wake;
    for (const int number : handledSignals) {
        struct sigaction action = {};
        ::sigaction(number, nullptr, &action);
        if (action.sa_handler == SIG_IGN) {
            continue; // whoever started the program wants it to live on (nohup)
        }
        action = {};
        action.sa_handler = handle;
        action.sa_flags = SA_RESTART;
        ::sigaction(number, &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : handledSignals) {
        struct sigaction action = {};
        ::sigaction(number, nullptr, &action);
        if (action.sa_handler == handle) {
            ::signal(number, SIG_DFL);
        }
    }
    wake = nullptr;
}

void TerminationSignals::drain()
{
    m_wake.clear();
    Q_EMIT received();
}

} // namespace tidewright
