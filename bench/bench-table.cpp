// SPDX-License-Identifier: GPL-3.0-or-later
// bench-table LISTING: the pod table over a listing of pods as kubectl printed it (bench.sh makes one of 30,000).
#include "Measure.h"
#include "StallMeter.h"

#include "core/ApplicationRecord.h"
#include "pods/Pod.h"
#include "pods/PodController.h"
#include "resources/Merge.h"
#include "resources/ResourceTableView.h"

#include <QApplication>
#include <QEventLoop>
#include <QFile>
#include <QHeaderView>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

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
    void agreeWithKubeConfig(std::function<void(bool)> completion) override { completion(true); }

private:
    KubeCtl m_kubeCtl;
};

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
        awk.start(QStringLiteral("awk"),
            {QStringLiteral("-F\\t"), QStringLiteral("{n+=NF} END{print n}"), path});
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
        ResourceTableModel model(podKind());
        ArrangingModel arranged(model);
        ResourceTableView view(arranged);
        view.resize(1000, 600);
        view.show();
        QApplication::processEvents();
        const double start = processCpuSeconds();
        const MergeResult merged = mergeListing(model.kind(), listing, *model.snapshot());
        model.appendRows(merged.added);
        QApplication::processEvents();
        times.push_back(processCpuSeconds() - start);
    }
    return median(times);
}

/// What `action` costs the main thread, until `table` has loaded again when it loads.
struct Cost
{
    double stall = 0;
    double mainThreadCpu = 0;
};

Cost measure(SharedContentViewController *loading, const std::function<void()> &action)
{
    StallMeter meter;
    QEventLoop loop;
    if (loading) {
        QObject::connect(
            loading, &SharedContentViewController::loadFinished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
    }
    const double cpu = threadCpuSeconds();
    meter.start();
    action();
    // Whatever was put off (painting, cell widgets) belongs to it.
    QTimer::singleShot(loading ? 60'000 : 150, &loop, &QEventLoop::quit);
    loop.exec();
    QTimer::singleShot(100, &loop, &QEventLoop::quit);
    loop.exec();
    return {meter.longest(), threadCpuSeconds() - cpu};
}

/// A kubectl that prints the listing.
QString writeFakeKubectl(const QTemporaryDir &folder, const QString &listing)
{
    QFile script(folder.filePath(QStringLiteral("kubectl")));
    if (script.open(QIODevice::WriteOnly)) {
        script.write("#!/bin/sh\nexec cat '" + QFile::encodeName(listing) + "'\n");
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }
    return script.fileName();
}

void measureTable(Report &report, double sortSeconds)
{
    std::vector<double> stalls;
    std::vector<double> firstLoads;
    std::vector<double> refreshes;
    const auto note = [&stalls](const Cost &cost) {
        stalls.push_back(cost.stall);
        return cost.mainThreadCpu;
    };
    std::vector<std::vector<double>> perRound;
    const char *const steps[] = {"load", "refresh", "sort by name", "refresh while sorted", "sort by restarts",
        "sort backwards", "filter", "filter off", "clear and load"};
    for (int i = 0; i < rounds; ++i) {
        stalls.clear();
        BenchWindow window;
        PodController table(window);
        table.resize(1200, 700);
        table.show();
        QApplication::processEvents();
        QHeaderView *header = table.tableView().horizontalHeader();
        firstLoads.push_back(note(measure(&table, [&] { table.reloadLogging(false); })));
        refreshes.push_back(note(measure(&table, [&] { table.reloadLogging(false); })));
        note(measure(nullptr, [&] { header->setSortIndicator(0, Qt::AscendingOrder); }));
        note(measure(&table, [&] { table.reloadLogging(false); }));
        note(measure(nullptr, [&] { header->setSortIndicator(2, Qt::AscendingOrder); }));
        note(measure(nullptr, [&] { header->setSortIndicator(0, Qt::DescendingOrder); }));
        note(measure(nullptr, [&] { table.setFilter(QStringLiteral("1")); }));
        note(measure(nullptr, [&] { table.setFilter(QString()); }));
        note(measure(&table, [&] { table.clearAndReload(false); }));
        perRound.push_back(stalls);
    }
    for (std::size_t step = 0; step < std::size(steps); ++step) {
        std::vector<double> values;
        for (const auto &round : perRound) {
            values.push_back(round[step]);
        }
        report.ratio(std::string("longest main-thread stall, ") + steps[step] + " / stable_sort", median(values),
            sortSeconds, 3.0, "ms");
    }
    report.ratio("unchanged refresh, main thread / first load", median(refreshes), median(firstLoads), 0.1, "ms");
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
    const QByteArray listing = file.readAll().trimmed();
    const QStringList names = namesOf(listing);
    std::printf("%lld pods, %.1f MB\n", static_cast<long long>(names.size()), double(listing.size()) / 1e6);
    QTemporaryDir folder;
    setKubectlPath(writeFakeKubectl(folder, file.fileName()));
    Report report;
    report.ratio("parse, merge and apply, CPU / awk", parseMergeApplySeconds(listing), awkSeconds(file.fileName()),
        10.0, "ms");
    measureTable(report, stableSortSeconds(names));
    return report.allKept() ? 0 : 1;
}
