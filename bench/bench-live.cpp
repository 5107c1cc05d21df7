// SPDX-License-Identifier: GPL-3.0-or-later
// bench-live STATE SERVER NAMESPACE: the live stream of pods. STATE is what `kubectl get --raw` prints of the
// pods of the namespace (bench.sh makes one of 30,000); the cluster at SERVER, which has them, is the current
// one of KUBECONFIG.
#include "Measure.h"

#include "core/ApplicationRecord.h"
#include "pods/table/Pod.h"
#include "resources/live/ListDecoder.h"
#include "resources/live/LiveObjects.h"
#include "resources/live/LiveStream.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryFile>
#include <QUrl>

#include <algorithm>
#include <cstdio>

using namespace tidewright;
using namespace tidewright::bench;

namespace {

constexpr int rounds = 5;
constexpr qsizetype pieceSize = 1 << 16; // as a pipe gives them

struct Run
{
    double wall = 0;
    double cpu = 0;
};

Run runOf(const QString &program, const QStringList &arguments)
{
    const double start = wallSeconds();
    const double cpu = childrenCpuSeconds();
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForFinished(300'000) || process.exitCode() != 0) {
        std::fprintf(stderr, "%s did not run\n", qPrintable(program));
        std::exit(2);
    }
    return {wallSeconds() - start, childrenCpuSeconds() - cpu};
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
            objects.put(change.key, change.uid, change.line, 0);
        }
    }
    objects.completeState();
    const double seconds = threadCpuSeconds() - start;
    rows = objects.takeChanges().upserts.size();
    return seconds;
}

struct Load
{
    double first = 0; ///< seconds to the first batch with rows
    double all = 0; ///< to the end of the state
    double mainThread = 0; ///< CPU, receiving the batches included
    std::size_t rows = 0;
};

Load load(const QString &server, const QString &nameSpace)
{
    Load load;
    const double start = wallSeconds();
    const double cpu = threadCpuSeconds();
    LiveStream stream(podKind(), {{}, server, nameSpace}, liveMeans([] { return Shell::create(); }));
    QObject::connect(&stream, &LiveStream::batchReady, &stream, [&](const LiveBatch &batch) {
        load.rows += batch.upserts.size();
        if (load.first == 0 && load.rows > 0) {
            load.first = wallSeconds() - start;
        }
        if (batch.stateComplete) {
            load.all = wallSeconds() - start;
            load.mainThread = threadCpuSeconds() - cpu;
            QCoreApplication::quit();
        }
    });
    QObject::connect(&stream, &LiveStream::statusChanged, &stream, [&] {
        if (!stream.status().reason.isEmpty()) {
            std::fprintf(stderr, "%s\n", qPrintable(stream.status().reason));
            QCoreApplication::exit(2);
        }
    });
    stream.start();
    if (QCoreApplication::exec() != 0) {
        std::exit(2);
    }
    return load;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    setKubectlPath(QDir(QCoreApplication::applicationDirPath())
                       .absoluteFilePath(QStringLiteral("../libexec/tidewright/kubectl")));
    const QStringList arguments = application.arguments();
    QFile file(arguments.value(1));
    if (arguments.size() != 4 || !file.open(QIODevice::ReadOnly)) {
        std::fputs("usage: bench-live STATE SERVER NAMESPACE\n", stderr);
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
        return runOf(QStringLiteral("awk"),
            {QStringLiteral("-F\\t"), QStringLiteral("{n+=NF} END{print n}"), lines.fileName()})
            .cpu;
    });
    std::printf("%zu pods, %.1f MB\n", rows, double(state.size()) / 1e6);
    report.ratio("live: state into rows, CPU / awk", decoding, awk, 8.0, "ms");

    const QString path = QStringLiteral("/api/v1/namespaces/%1/pods").arg(arguments[3]);
    const QString prefix = QUrl(arguments[2]).path();
    const double names = medianOf([] {
        return runOf(kubectlPath(), {QStringLiteral("get"), QStringLiteral("ns")}).wall;
    });
    const double bare = medianOf([&] {
        return runOf(kubectlPath(), {QStringLiteral("get"), QStringLiteral("--raw"), prefix + path}).wall;
    });
    std::vector<double> first;
    std::vector<double> all;
    std::vector<double> mainThread;
    for (int i = 0; i < rounds; ++i) {
        const Load loaded = load(arguments[2], arguments[3]);
        first.push_back(loaded.first);
        all.push_back(loaded.all);
        mainThread.push_back(loaded.mainThread);
        rows = loaded.rows;
    }
    report.ratio("live: first rows / bare get ns", median(first), names, 5.0, "ms");
    report.ratio("live: all rows / bare get --raw of the same state", median(all), bare, 1.5, "ms");
    std::printf("%zu rows; main thread %.0f ms\n", rows, median(mainThread) * 1e3);
    return report.allKept() ? 0 : 1;
}
