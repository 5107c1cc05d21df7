// SPDX-License-Identifier: GPL-3.0-or-later
// bench-live STATE: the reading of a live stream. STATE is what `kubectl get --raw` prints of the pods of a
// namespace (bench.sh makes one of 30,000).
#include "Measure.h"

#include "pods/table/Pod.h"
#include "resources/decoding/ListDecoder.h"
#include "resources/decoding/ObjectLines.h"
#include "resources/live/LiveObjects.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryFile>

#include <algorithm>
#include <cstdio>

using namespace tidewright;
using namespace tidewright::bench;

namespace {

constexpr int rounds = 5;
constexpr qsizetype pieceSize = 1 << 16; // as a pipe gives them

double cpuOf(const QString &program, const QStringList &arguments)
{
    const double start = childrenCpuSeconds();
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForFinished(300'000) || process.exitCode() != 0) {
        std::fprintf(stderr, "%s did not run\n", qPrintable(program));
        std::exit(2);
    }
    return childrenCpuSeconds() - start;
}

template <typename Function> double medianOf(Function function)
{
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        times.push_back(function());
    }
    return median(times);
}

/// CPU of all that happens on the reading thread: from the bytes to rows that a table can take.
double decodeSeconds(const QByteArray &state, std::size_t &rows)
{
    const auto kind = std::make_shared<ResourceKind>(podKind());
    QString problem;
    const auto lines = std::make_shared<ObjectLines>(*kind, problem);
    const double start = threadCpuSeconds();
    ListDecoder decoder(lines);
    LiveObjects objects(kind, false);
    objects.beginState();
    std::vector<LiveChange> changes;
    for (qsizetype begin = 0; begin < state.size(); begin += pieceSize) {
        changes.clear();
        decoder.take(QByteArrayView(state).sliced(begin, std::min(pieceSize, state.size() - begin)), changes);
        for (const LiveChange &change : changes) {
            objects.put(change, 0);
        }
    }
    objects.completeState();
    const double seconds = threadCpuSeconds() - start;
    rows = objects.takeChanges().upserts.size();
    return seconds;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    QFile file(arguments.value(1));
    if (arguments.size() != 2 || !file.open(QIODevice::ReadOnly)) {
        std::fputs("usage: bench-live STATE\n", stderr);
        return 2;
    }
    // An object per line, as the server sends a watch: awk cannot take it all as one line.
    const QByteArray state = file.readAll().replace(R"({"metadata":)", "\n{\"metadata\":");
    QTemporaryFile lines;
    if (!lines.open() || lines.write(state) != state.size() || !lines.flush()) {
        return 2;
    }
    std::size_t rows = 0;
    Report report;
    const double decoding = medianOf([&] { return decodeSeconds(state, rows); });
    const double awk = medianOf([&] {
        return cpuOf(QStringLiteral("awk"),
            {QStringLiteral("-F\\t"), QStringLiteral("{n+=NF} END{print n}"), lines.fileName()});
    });
    std::printf("%zu pods, %.1f MB\n", rows, double(state.size()) / 1e6);
    report.ratio("live: state into rows, CPU / awk", decoding, awk, 8.0, "ms");
    return report.allKept() ? 0 : 1;
}
