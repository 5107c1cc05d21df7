// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/streams/PodWatch.h"

#include "platform/threads/MainQueue.h"

namespace tidewright {

namespace {

constexpr int soonMilliseconds = 500;

} // namespace

PodWatch::PodWatch(LogPlace place, QString workload, QString nameSpace)
    : m_place(std::move(place))
    , m_workload(std::move(workload))
    , m_nameSpace(std::move(nameSpace))
{
    m_timer.setSingleShot(true);
    m_timer.callOnTimeout(this, &PodWatch::look);
}

PodWatch::~PodWatch()
{
    if (m_shell) {
        m_shell->cancel();
    }
}

void PodWatch::start()
{
    look();
}

void PodWatch::lookSoon()
{
    if (!m_shell && (!m_timer.isActive() || m_timer.remainingTime() > soonMilliseconds)) {
        m_timer.start(soonMilliseconds);
    }
}

void PodWatch::look()
{
    const QStringList get{QStringLiteral("kubectl"), QStringLiteral("get")};
    if (!m_selector) {
        run(get + QStringList{m_workload, QStringLiteral("-o"), QStringLiteral("jsonpath={.spec.selector}")}
                + m_place.arguments(m_nameSpace),
            &PodWatch::takeSelector);
    } else {
        run(get + QStringList{QStringLiteral("pods"), QLatin1String("--selector=") + *m_selector}
                + podOutputArguments() + m_place.arguments(m_nameSpace),
            &PodWatch::takePods);
    }
}

void PodWatch::run(const QStringList &arguments, void (PodWatch::*take)(const QByteArray &output))
{
    m_shell = m_place.makeShell();
    m_shell->runAsync(
        arguments, !m_isTold, nullptr, [self = QPointer<PodWatch>(this), take](ShellResult result) {
            postToMain(self, [take, result = std::move(result)](PodWatch &watch) {
                watch.m_shell.reset();
                watch.m_timer.start(usualMilliseconds);
                if (result.exitStatus == 0) {
                    (watch.*take)(result.output);
                } else {
                    Q_EMIT watch.failed(result.failure());
                }
            });
        });
}

void PodWatch::takeSelector(const QByteArray &json)
{
    const std::optional<QString> selector = labelSelector(json);
    if (!selector || selector->isEmpty()) {
        m_timer.stop();
        Q_EMIT failed(selector ? tr("%1 selects no pods.").arg(m_workload)
                               : tr("The selector of %1 could not be understood.").arg(m_workload));
        return;
    }
    m_selector = selector;
    m_isTold = true; // what follows from it is asked again and again, and is long
    look();
}

void PodWatch::takePods(const QByteArray &output)
{
    Q_EMIT listed(parsedPods(output));
}

} // namespace tidewright
