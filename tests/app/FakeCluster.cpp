// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCluster.h"

#include "core/ApplicationRecord.h"

#include <QFile>

using namespace tidewright;

namespace {

// The folder of the script is its memory: NAME.out, NAME.err and NAME.hold tell it what to do.
constexpr auto script = R"sh(#!/bin/sh
dir=${0%/*}
case "$1 $2" in
"config view") run=contexts ;;
"get ns") run=namespaces ;;
"config use-context") run="use $3" ;;
"config set-context") run="set ${4#--namespace=}" ;;
*) run="$1 $2"; echo "$(printf '%s' "$*" | tr '\n\t' '  ')" >> "$dir/reads"; echo "$(nice) $run" >> "$dir/niceness" ;;
esac
printf '%s\n' "$run" >> "$dir/calls"
case "$run" in use*|set*) echo "$run" >> "${KUBECONFIG:-/dev/null}" ;; esac
file=$(printf '%s' "$run" | tr ' ' '-')
while [ -e "$dir/$file.hold" ]; do sleep 0.02; done
[ -e "$dir/$file.err" ] && cat "$dir/$file.err" >&2
[ -e "$dir/$file.out" ] && cat "$dir/$file.out"
printf '%s\n' "$run" >> "$dir/ended"
)sh";

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

} // namespace

void FakeConsole::addEntry(
    const QString &command, const QString & /*response*/, const std::optional<ConsoleError> &error)
{
    commands.append(command);
    if (error) {
        errors.append(error->description);
    }
}

FakeCluster::FakeCluster()
    : settings(settingsFile())
{
    setUserDefaultsForTesting(&settings);
    qputenv("XDG_DATA_HOME", QFile::encodeName(path(QStringLiteral("data")))); // where the user's actions are
    applicationRecord() = {};
    const QString kubectl = path(QStringLiteral("kubectl"));
    writeFile(kubectl, script);
    QFile::setPermissions(kubectl, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    setKubectlPath(kubectl);
    writeFile(kubeConfig(), "kubeconfig\n");
    answer(QStringLiteral("contexts"), "b\na\tb\tc\t");
    answer(QStringLiteral("namespaces"), "default kube-system shop");
}

FakeCluster::~FakeCluster()
{
    setUserDefaultsForTesting(nullptr);
}

QString FakeCluster::fileFor(QString run, const char *suffix) const
{
    return path(run.replace(QLatin1Char(' '), QLatin1Char('-')) + QLatin1String(suffix));
}

void FakeCluster::answer(const QString &run, const QByteArray &output)
{
    writeFile(fileFor(run, ".out"), output);
}

void FakeCluster::fail(const QString &run, const QByteArray &error)
{
    writeFile(fileFor(run, ".err"), error);
}

void FakeCluster::succeed(const QString &run)
{
    QFile::remove(fileFor(run, ".err"));
}

void FakeCluster::hold(const QString &run)
{
    writeFile(fileFor(run, ".hold"), {});
}

void FakeCluster::release(const QString &run)
{
    QFile::remove(fileFor(run, ".hold"));
}

QStringList FakeCluster::lines(const QString &name) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

QStringList FakeCluster::calls() const
{
    QStringList result = lines(QStringLiteral("calls"));
    result.removeIf([](const QString &run) { return run.startsWith(QLatin1String("get ")); });
    return result;
}

QStringList FakeCluster::ended() const
{
    return lines(QStringLiteral("ended"));
}

QStringList FakeCluster::tableReads() const
{
    return lines(QStringLiteral("reads"));
}

int FakeCluster::niceness(const QString &run) const
{
    const QStringList all = lines(QStringLiteral("niceness")).filter(QLatin1Char(' ') + run);
    return all.isEmpty() ? -1 : all.last().section(QLatin1Char(' '), 0, 0).toInt();
}

void FakeCluster::forgetCalls()
{
    QFile::remove(path(QStringLiteral("calls")));
    QFile::remove(path(QStringLiteral("reads")));
}
