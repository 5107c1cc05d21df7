// SPDX-License-Identifier: GPL-3.0-or-later
#include "FakeCluster.h"

#include "core/running/ApplicationRecord.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace tidewright;
using namespace Qt::StringLiterals;

namespace {

// The folder of the script is its memory: NAME.out, NAME.err, NAME.hold and the like tell it what to do. What
// is current is changed in the first file of KUBECONFIG, in place, as kubectl does it.
constexpr auto script = R"sh(#!/bin/sh
dir=${0%/*}
first=${KUBECONFIG%%:*}
case "$first" in *view-*) whose= ;; *) whose="file " ;; esac
case "$1 $2 $3" in
"config view -ojson") run=read ;;
"config view"*) run=contexts ;;
"get ns"*) run=namespaces ;;
"auth can-i --list") run=rights; echo "$*" >> "$dir/reviews" ;;
"config use-context"*) run="${whose}use $3"; change="s/\"current-context\": \".*\"/\"current-context\": \"$3\"/" ;;
"config set-context"*) run="${whose}set ${4#--namespace=}"; change="s/\"namespace\": \".*\"/\"namespace\": \"${4#--namespace=}\"/" ;;
*) run="$1 $2"; echo "$(printf '%s' "$*" | tr '\n\t' '  ')" >> "$dir/reads"; echo "$(nice) $run" >> "$dir/niceness" ;;
esac
case "$run" in read | rights) ;; *) printf '%s\n' "$run" >> "$dir/calls" ;; esac
file=$(printf '%s' "$run" | tr ' ' '-')
while [ -e "$dir/$file.hold" ]; do sleep 0.02; done
[ -e "$dir/$file.err" ] && cat "$dir/$file.err" >&2 && exit 1
[ "$run" = read ] && { [ -s "$first" ] || echo '{"kind": "Config"}'; cat "$first"; exit; }
[ -n "$change" ] && [ ! -e "$dir/$file.idle" ] && changed=$(sed "$change" "$first") && printf '%s\n' "$changed" > "$first"
[ -e "$dir/$file.cut" ] && : > "$first"
[ -e "$dir/$file.kill" ] && kill -9 $$
[ -e "$dir/$file.status" ] && exit 3
case "$*" in *metadata.namespace*) behind='\tspace'; [ -e "$dir/$file-everywhere.out" ] && file=$file-everywhere behind= ;; esac
[ -e "$dir/$file.out" ] && sed "s/\$/$behind/" "$dir/$file.out"
[ "$run" = rights ] || printf '%s\n' "$run" >> "$dir/ended"
)sh";

/// A kubeconfig in which every context leads to a cluster and a user of its own name.
QByteArray kubeConfigOf(const QByteArray &contextsAnswer)
{
    const QByteArrayList lines = contextsAnswer.split('\n');
    QJsonArray contexts;
    for (const QByteArray &bytes : lines.value(1).split('\t')) {
        const QString name = QString::fromUtf8(bytes);
        if (!name.isEmpty()) {
            contexts.append(QJsonObject{{u"name"_s, name},
                {u"context"_s,
                    QJsonObject{{u"cluster"_s, name}, {u"user"_s, name}, {u"namespace"_s, u"default"_s}}}});
        }
    }
    return QJsonDocument({{u"kind"_s, u"Config"_s}, {u"current-context"_s, QString::fromUtf8(lines.first())},
                             {u"contexts"_s, contexts}})
        .toJson();
}

} // namespace

void FakeConsole::addEntry(
    const QString &command, const QString &response, const std::optional<ConsoleError> &error)
{
    commands.append(command);
    responses.append(response);
    if (error) {
        errors.append(error->description);
    }
}

FakeCluster::FakeCluster()
    : settings(settingsFile())
{
    settings.set(u"liveUpdates"_s, u"off"_s); // its kubectl knows listings only
    setUserDefaultsForTesting(&settings);
    qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s))); // where the user's actions are
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(path())); // where the views are
    applicationRecord() = {};
    write(u"kubectl"_s, script);
    setKubectlPath(path(u"kubectl"_s));
    answer(u"contexts"_s, "b\na\tb\tc\t");
    answer(u"namespaces"_s, "default kube-system shop");
}

FakeCluster::~FakeCluster()
{
    setUserDefaultsForTesting(nullptr);
}

QString FakeCluster::fileFor(QString run, const QByteArray &suffix)
{
    return run.replace(u' ', u'-') + QString::fromLatin1(suffix);
}

void FakeCluster::answer(const QString &run, const QByteArray &output)
{
    write(fileFor(run, ".out"), output);
    if (run == u"contexts") {
        write(u"kubeconfig"_s, kubeConfigOf(output));
    }
}

void FakeCluster::fail(const QString &run, const QByteArray &error)
{
    write(fileFor(run, ".err"), error);
}

void FakeCluster::disturb(const QString &run, const QString &ways)
{
    for (const QByteArray &way : ways.toLatin1().split(' ')) {
        write(fileFor(run, '.' + way), way == "err" ? "open config.lock: file exists" : "");
    }
}

QString FakeCluster::placeOf(const Shell &shell)
{
    QFile first(QFile::decodeName(shell.environment.value("KUBECONFIG").split(':').first()));
    const auto view
        = KubeConfigContents::parse(first.open(QIODevice::ReadOnly) ? first.readAll() : QByteArray());
    if (!view || !first.fileName().contains(u"/views/"_s)) {
        return u"(no view)"_s;
    }
    return view->hasContext(view->current) ? view->current + u'/' + view->nameSpace(view->current)
                                           : u"nowhere"_s;
}

UserDefaults::Dictionary FakeCluster::remembered() const
{
    return UserDefaults(settingsFile()).dictionary(u"lastNamespaces"_s).value_or(UserDefaults::Dictionary());
}

void FakeCluster::edit(const QByteArray &before, const QByteArray &after) const
{
    const QByteArray bytes = kubeConfigBytes();
    if (!bytes.contains(before)) {
        qFatal("the kubeconfig has no %s", before.constData());
    }
    write(u"kubeconfig"_s, QByteArray(bytes).replace(before, after));
}

void FakeCluster::succeed(const QString &run)
{
    for (const char *suffix : {".err", ".kill", ".idle", ".cut", ".status"}) {
        remove(fileFor(run, suffix));
    }
}

void FakeCluster::hold(const QString &run)
{
    write(fileFor(run, ".hold"), {});
}

void FakeCluster::release(const QString &run)
{
    remove(fileFor(run, ".hold"));
}

QStringList FakeCluster::lines(const QString &name) const
{
    return QString::fromUtf8(read(name)).split(u'\n', Qt::SkipEmptyParts);
}

QStringList FakeCluster::calls() const
{
    QStringList result = lines(u"calls"_s);
    result.removeIf([](const QString &run) { return run.startsWith(u"get "_s); });
    return result;
}

int FakeCluster::niceness(const QString &run) const
{
    const QStringList all = lines(u"niceness"_s).filter(u' ' + run);
    return all.isEmpty() ? -1 : all.last().section(u' ', 0, 0).toInt();
}

void FakeCluster::forgetCalls()
{
    remove(u"calls"_s);
    remove(u"reads"_s);
}
