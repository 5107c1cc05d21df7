// SPDX-License-Identifier: GPL-3.0-or-later
// bench-live-window SERVER NAMESPACE QUIET
//
// The program as it starts for the user, with live updates on, on a demo cluster at SERVER with many pods in
// NAMESPACE: the current one of KUBECONFIG, and the namespace that the window comes back to. Times end when
// the rows are painted. QUIET: seconds over which the program is left alone.
#include "Children.h"
#include "Measure.h"
#include "StallMeter.h"

#include "app/AppDelegate.h"
#include "app/window/MainWindowController.h"
#include "core/running/ApplicationRecord.h"
#include "pods/table/PodController.h"
#include "resources/table/ResourceTableView.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryFile>
#include <QTimer>
#include <QUrl>

#include <httplib.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <random>
#include <thread>

using namespace tidewright;
using namespace tidewright::bench;
using namespace std::chrono_literals;

namespace {

constexpr int rounds = 5;
constexpr int probes = 100;
constexpr int changesPerSecond = 1000;
constexpr auto loadPeriod = 10s;
constexpr auto patience = 120s;

[[noreturn]] void giveUp(const char *what)
{
    std::fprintf(stderr, "bench-live-window: %s\n", what);
    std::fflush(stdout);
    std::_Exit(2);
}

/// Runs the event loop until something has been painted with which `isDone` agrees. Yields when that was.
class Paints : public QObject
{
public:
    explicit Paints(QWidget &widget) { widget.installEventFilter(this); }

    double waitFor(std::function<bool()> isDone)
    {
        QEventLoop loop;
        QTimer::singleShot(patience, &loop, [&loop] { loop.exit(1); });
        m_painted = [&] {
            if (isDone()) {
                loop.quit();
            }
        };
        const bool isLate = loop.exec() != 0;
        m_painted = nullptr;
        if (isLate) {
            giveUp("nothing of that kind was painted");
        }
        return m_at;
    }

private:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && m_painted) {
            // Painting, and bringing it to the screen, goes on behind this.
            QTimer::singleShot(0, this, [this] {
                m_at = wallSeconds();
                if (m_painted) {
                    m_painted();
                }
            });
        }
        return false;
    }

    std::function<void()> m_painted;
    double m_at = 0;
};

void letPass(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

/// The cluster's side.
class Server
{
public:
    Server(const QUrl &address, const QString &nameSpace)
        : m_client(address.host().toStdString(), address.port())
        , m_pods(QStringLiteral("%1/api/v1/namespaces/%2/pods/").arg(address.path(), nameSpace).toStdString())
    {
        m_client.set_keep_alive(true);
        m_client.set_tcp_nodelay(true);
    }

    void setPhase(const QString &pod, const QByteArray &phase)
    {
        const auto answer = m_client.Patch(m_pods + pod.toStdString() + "/status",
            R"({"status":{"phase":")" + phase.toStdString() + "\"}}", "application/merge-patch+json");
        if (!answer || answer->status != 200) {
            giveUp("the demo cluster refused a change");
        }
    }
    void changePods(int count)
    {
        const auto answer = m_client.Post(
            "/demo/control", "{\"changePods\": " + std::to_string(count) + '}', "application/json");
        if (!answer || answer->status != 200) {
            giveUp("the demo cluster did not change");
        }
    }

private:
    httplib::Client m_client;
    const std::string m_pods;
};

double wallOf(const QStringList &arguments)
{
    QTemporaryFile output;
    QProcess process;
    if (!output.open()) {
        giveUp("no temporary file");
    }
    const double start = wallSeconds();
    process.setStandardOutputFile(output.fileName());
    process.start(kubectlPath(), arguments);
    if (!process.waitForFinished(300'000) || process.exitCode() != 0) {
        giveUp("kubectl did not run");
    }
    return wallSeconds() - start;
}

void measureLoads(Report &report, PodController &table, Paints &paints, const QString &rawPath)
{
    std::vector<double> first;
    std::vector<double> all;
    std::vector<double> names;
    std::vector<double> bare;
    const std::size_t count = table.tableItems().size();
    double own = 0;
    double resident = 0;
    for (int i = 0; i < rounds; ++i) {
        names.push_back(wallOf({QStringLiteral("get"), QStringLiteral("ns")}));
        bare.push_back(wallOf({QStringLiteral("get"), QStringLiteral("--raw"), rawPath}));
        PeakMemory memory;
        const double start = wallSeconds();
        table.clearAndReload({});
        first.push_back(paints.waitFor([&] { return !table.tableItems().empty(); }) - start);
        all.push_back(paints.waitFor([&] { return table.tableItems().size() == count; }) - start);
        letPass(1s); // until it watches
        own = std::max(own, memory.own());
        resident = std::max(resident, memory.resident());
    }
    std::printf("%zu rows\n", count);
    report.ratio("live: first rows on screen / bare get ns", median(first), median(names), 5.0, "ms");
    report.ratio(
        "live: all rows on screen / bare get --raw of the state", median(all), median(bare), 1.5, "ms");
    report.absolute("live: memory of a kubectl that feeds a table", own, 64, "MB");
    std::printf("with what is resident of its program: %.1f MB\n", resident);
}

/// From before the request to the server until the changed row is painted.
void measureLatency(Report &report, PodController &table, Paints &paints, Server &server)
{
    std::mt19937 random(1);
    std::vector<double> times;
    for (int i = 0; i < probes; ++i) {
        letPass(std::chrono::milliseconds(40 + random() % 50)); // in step with no frame
        const Row row = table.arrangedObjects().arrangedRow(static_cast<int>(random() % 10));
        const QByteArray phase = "Probe" + QByteArray::number(i);
        const QByteArray field = '\t' + phase + '\t';
        const double start = wallSeconds();
        std::thread request([&] { server.setPhase(row->name, phase); });
        const auto isThere = [&] {
            for (int shown = 0; shown < 10; ++shown) {
                if (table.arrangedObjects().arrangedRow(shown)->line.contains(field)) {
                    return true;
                }
            }
            return false;
        };
        times.push_back(paints.waitFor(isThere) - start);
        request.join();
    }
    std::sort(times.begin(), times.end());
    std::printf("a change to its painted row: median %.1f ms, longest %.1f ms\n", median(times) * 1e3,
        times.back() * 1e3);
    report.absolute("live: a change to its painted row, 99th of 100", times[probes - 2] * 1e3, 50, "ms");
}

void measureBusy(Report &report, const QUrl &address, const QString &nameSpace)
{
    std::atomic<bool> isOver = false;
    std::atomic<int> changes = 0;
    std::thread changing([&] {
        Server server(address, nameSpace);
        auto due = std::chrono::steady_clock::now();
        for (; !isOver; changes += changesPerSecond / 100) {
            server.changePods(changesPerSecond / 100);
            due += 10ms;
            std::this_thread::sleep_until(due);
        }
    });
    letPass(1s); // under way
    const int changesBefore = changes;
    const double start = wallSeconds();
    const double cpu = threadCpuSeconds();
    letPass(loadPeriod);
    const double share = (threadCpuSeconds() - cpu) / (wallSeconds() - start);
    std::printf("%.0f changes a second\n", (changes - changesBefore) / (wallSeconds() - start));
    StallMeter meter; // costs CPU itself
    meter.start();
    letPass(loadPeriod);
    const double longest = meter.longest();
    const double longestCpu = meter.longestCpu();
    isOver = true;
    changing.join();
    report.absolute("live: 1000 changes a second, main thread", share * 100, 20, "%");
    report.absolute("live: 1000 changes a second, longest stall (CPU)", longestCpu * 1e3, 16, "ms");
    std::printf("longest stall by the clock on the wall, with whatever else ran: %.1f ms\n", longest * 1e3);
}

void measureQuiet(Report &report, std::chrono::seconds period)
{
    letPass(3s); // what was put off
    const double cpu = processCpuSeconds() + allChildrenCpuSeconds();
    const double start = wallSeconds();
    letPass(period);
    const double spent = processCpuSeconds() + allChildrenCpuSeconds() - cpu;
    report.absolute(
        "live: quiet, program and children, of a core", spent / (wallSeconds() - start) * 100, 1, "%");
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    AppDelegate delegate;
    if (arguments.size() != 4 || !delegate.startUp().isEmpty()) {
        giveUp("usage: bench-live-window SERVER NAMESPACE QUIET-SECONDS");
    }
    delegate.applicationDidFinishLaunching();
    PodController *table = nullptr;
    const auto widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        table = table ? table : qobject_cast<PodController *>(widget);
    }
    if (!table) {
        giveUp("there is no pod table");
    }
    Paints paints(*table->tableView().viewport());
    bool hasLoaded = false;
    QObject::connect(table, &SharedContentViewController::loadFinished, table, [&] { hasLoaded = true; });
    paints.waitFor([&] { return hasLoaded; });
    letPass(1s);

    const QUrl address(arguments[1]);
    Report report;
    measureLoads(report, *table, paints,
        QStringLiteral("%1/api/v1/namespaces/%2/pods").arg(address.path(), arguments[2]));
    Server server(address, arguments[2]);
    measureLatency(report, *table, paints, server);
    measureBusy(report, address, arguments[2]);
    measureQuiet(report, std::chrono::seconds(arguments[3].toInt()));
    delegate.applicationWillTerminate();
    std::fflush(stdout);
    std::_Exit(report.allKept() ? 0 : 1);
}
