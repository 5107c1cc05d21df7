// SPDX-License-Identifier: GPL-3.0-or-later
// bench-table LISTING: the pod table over a listing of pods as kubectl printed it (bench.sh makes one of
// 30,000).
#include "Measure.h"
#include "StallMeter.h"

#include "core/running/ApplicationRecord.h"
#include "pods/table/Pod.h"
#include "pods/table/PodController.h"
#include "resources/listing/Merge.h"
#include "resources/table/ResourceTableView.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QHeaderView>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>

using namespace tidewright;
using namespace tidewright::bench;

namespace {

constexpr int rounds = 7;

class BenchWindow : public WindowState
{
public:
    QString currentContext() const override { return QStringLiteral("bench"); }
    QString currentNamespace() const override { return QStringLiteral("bench"); }
    QString kubeConfigPath() const override { return {}; }
    KubeCtl &kubeCtl() override { return m_kubeCtl; }
    Console *console() override { return nullptr; }
    void whenSettled(std::function<void(const QString &)> completion) override { completion({}); }

private:
    KubeCtl m_kubeCtl;
};

/// The lines in an arbitrary but fixed order: a server lists its objects by name, and sorting what is sorted
/// already would measure nothing, here and in the reference.
QByteArray shuffled(const QByteArray &listing)
{
    QByteArrayList lines = listing.split('\n');
    std::shuffle(lines.begin(), lines.end(), std::mt19937(1));
    return lines.join('\n');
}

QStringList namesOf(const QByteArray &listing)
{
    QStringList names;
    for (const QByteArray &line : listing.split('\n')) {
        names.append(QString::fromUtf8(line.left(line.indexOf('\t'))));
    }
    return names;
}

double stableSortSeconds(const QStringList &names)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        std::vector<QString> copy(names.cbegin(), names.cend());
        const double start = wallSeconds();
        std::stable_sort(copy.begin(), copy.end());
        times.push_back(wallSeconds() - start);
    }
    return median(times);
}

double awkSeconds(const QString &path)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const double start = childrenCpuSeconds();
        QProcess awk;
        awk.start(
            QStringLiteral("awk"), {QStringLiteral("-F\\t"), QStringLiteral("{n+=NF} END{print n}"), path});
        if (!awk.waitForFinished() || awk.exitCode() != 0) {
            std::fputs("awk did not run\n", stderr);
            std::exit(2);
        }
        times.push_back(childrenCpuSeconds() - start);
    }
    return median(times);
}

/// CPU of all that happens between the listing's bytes and the rows in a shown table.
double parseMergeApplySeconds(const QByteArray &listing)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        RowStore model(podKind());
        ArrangingModel arranged(model);
        ResourceTableView view(arranged);
        view.resize(1000, 600);
        view.show();
        QApplication::processEvents();
        const double start = threadCpuSeconds();
        const MergeResult merged = mergeListing(model.kind(), listing, *model.snapshot());
        model.appendRows(merged.added);
        QApplication::processEvents();
        times.push_back(threadCpuSeconds() - start);
    }
    return median(times);
}

/// Seconds that `action` costs the main thread, until the table has loaded again when it loads.
/// The meter itself costs CPU, so a run measures one of the two.
enum class Measure { Stall, Cpu };

double measure(Measure what, SharedContentViewController *loading, const std::function<void()> &action)
{
    StallMeter meter;
    QEventLoop loop;
    if (loading) {
        QObject::connect(loading, &SharedContentViewController::loadFinished, &loop, &QEventLoop::quit,
            Qt::QueuedConnection);
    }
    const double cpu = threadCpuSeconds();
    if (what == Measure::Stall) {
        meter.start();
    }
    action();
    // Whatever was put off (painting, cell widgets) belongs to it.
    QTimer::singleShot(loading ? 60'000 : 150, &loop, &QEventLoop::quit);
    loop.exec();
    QTimer::singleShot(100, &loop, &QEventLoop::quit);
    loop.exec();
    return what == Measure::Stall ? meter.longest() : threadCpuSeconds() - cpu;
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        std::fprintf(stderr, "%s cannot be written\n", qPrintable(path));
        std::exit(2);
    }
}

/// A kubectl that prints the listing.
QString writeFakeKubectl(const QTemporaryDir &folder, const QString &listing)
{
    const QString script = folder.filePath(QStringLiteral("kubectl"));
    write(script, "#!/bin/sh\nexec cat '" + QFile::encodeName(listing) + "'\n");
    QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner);
    return script;
}

/// A table that has not loaded yet, shown.
struct Opened
{
    BenchWindow window;
    PodController table{window};

    Opened()
    {
        table.resize(1200, 700);
        table.show();
        QApplication::processEvents();
    }
};

void measureStalls(Report &report, double sortSeconds)
{
    constexpr std::array steps{"load", "refresh", "sort by name", "refresh while sorted", "sort by restarts",
        "sort backwards", "filter", "filter by words", "filter off", "clear and load"};
    std::array<std::vector<double>, steps.size()> stalls;
    for (int i = 0; i < rounds; ++i) {
        Opened opened;
        PodController &table = opened.table;
        QHeaderView *header = table.tableView().horizontalHeader();
        const auto stall = [](SharedContentViewController *loading, const std::function<void()> &action) {
            return measure(Measure::Stall, loading, action);
        };
        const auto reload = [&] { table.reloadLogging(false); };
        stalls[0].push_back(stall(&table, reload));
        stalls[1].push_back(stall(&table, reload));
        stalls[2].push_back(stall(nullptr, [&] { header->setSortIndicator(0, Qt::AscendingOrder); }));
        stalls[3].push_back(stall(&table, reload));
        stalls[4].push_back(stall(nullptr, [&] { header->setSortIndicator(2, Qt::AscendingOrder); }));
        stalls[5].push_back(stall(nullptr, [&] { header->setSortIndicator(0, Qt::DescendingOrder); }));
        stalls[6].push_back(stall(nullptr, [&] { table.setFilter(QStringLiteral("1")); }));
        stalls[7].push_back(stall(
            nullptr, [&] { table.setFilter(QStringLiteral("1 -web status:run restarts:<9 age:>1m")); }));
        stalls[8].push_back(stall(nullptr, [&] { table.setFilter(QString()); }));
        stalls[9].push_back(stall(&table, [&] { table.clearAndReload({}); }));
    }
    for (std::size_t step = 0; step < steps.size(); ++step) {
        report.ratio(std::string("longest main-thread stall, ") + steps[step] + " / stable_sort",
            median(stalls[step]), sortSeconds, 3.0, "ms");
    }
}

void measureRefresh(Report &report)
{
    std::vector<double> firstLoads;
    std::vector<double> refreshes;
    for (int i = 0; i < rounds; ++i) {
        Opened opened;
        const auto reload = [&] { opened.table.reloadLogging(false); };
        firstLoads.push_back(measure(Measure::Cpu, &opened.table, reload));
        refreshes.push_back(measure(Measure::Cpu, &opened.table, reload));
    }
    report.ratio(
        "unchanged refresh, main thread / first load", median(refreshes), median(firstLoads), 0.1, "ms");
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QFile file(application.arguments().value(1));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fputs("usage: bench-table LISTING\n", stderr);
        return 2;
    }
    const QByteArray listing = shuffled(file.readAll().trimmed());
    const QStringList names = namesOf(listing);
    std::printf("%lld pods, %.1f MB\n", static_cast<long long>(names.size()), double(listing.size()) / 1e6);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("listing"));
    write(path, listing);
    setKubectlPath(writeFakeKubectl(folder, path));
    Report report;
    report.ratio(
        "parse, merge and apply, CPU / awk", parseMergeApplySeconds(listing), awkSeconds(path), 10.0, "ms");
    measureStalls(report, stableSortSeconds(names));
    measureRefresh(report);
    return report.allKept() ? 0 : 1;
}
