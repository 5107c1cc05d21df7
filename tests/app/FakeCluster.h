// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/KubeCtl.h"
#include "platform/settings/UserDefaults.h"
#include "support/TestFolder.h"

#include <QStringList>

/// Collects what a console would show.
class FakeConsole : public tidewright::Console
{
public:
    void addEntry(const QString &command, const QString &response,
        const std::optional<tidewright::ConsoleError> &error) override;

    QStringList commands;
    QStringList responses;
    QStringList errors;
};

/// A kubectl that writes down how it was called and gives the answers it was told to, with a kubeconfig,
/// settings and an application record of its own. One per test.
///
/// Runs are known as "contexts", "namespaces", "use CONTEXT" and "set NAMESPACE" (in a window's view), "file
/// use CONTEXT" and "file set NAMESPACE" (in the kubeconfig itself) and, for anything else, "get po" and the
/// like. What "get po everywhere" answers is listed in all namespaces, instead of the same in the namespace
/// "space".
class FakeCluster : public TestFolder
{
public:
    FakeCluster();
    ~FakeCluster();

    QString kubeConfig() const { return path(QStringLiteral("kubeconfig")); }
    QByteArray kubeConfigBytes() const { return read(QStringLiteral("kubeconfig")); }
    /// Replaces every occurrence of a text in the kubeconfig.
    void edit(const QByteArray &before, const QByteArray &after) const;
    QString settingsFile() const { return path(QStringLiteral("settings.json")); }

    void answer(const QString &run, const QByteArray &output);
    void fail(const QString &run, const QByteArray &error);
    /// Runs of that name do what they are to, and end in one or more ways (with spaces between) that say
    /// otherwise: "err" complains of a lock instead, "idle" changes nothing, "cut" leaves an empty file,
    /// "kill" is killed without a word, "status" ends with an exit status.
    void disturb(const QString &run, const QString &ways);
    void succeed(const QString &run);
    /// Runs of that name wait until they are released.
    void hold(const QString &run);
    void release(const QString &run);

    /// The runs that have begun, in order, without the reading of tables and of what a kubeconfig holds.
    QStringList calls() const;
    /// Of these, the runs that came to their own end.
    QStringList ended() const { return lines(QStringLiteral("ended")); }
    /// The complete argument lists of those that read tables.
    QStringList tableReads() const { return lines(QStringLiteral("reads")); }
    /// The same of those that ask what the user may do. They are "rights" and stand in no other list.
    QStringList reviews() const { return lines(QStringLiteral("reviews")); }
    /// The CPU priority value of the latest run of that name, -1 when there was none.
    int niceness(const QString &run) const;
    void forgetCalls();
    /// The namespaces that the settings file holds.
    tidewright::UserDefaults::Dictionary remembered() const;
    /// Where a child of the shell acts by itself, "CONTEXT/NAMESPACE": what its view of the kubeconfig says.
    static QString placeOf(const tidewright::Shell &shell);

    tidewright::UserDefaults settings;

private:
    static QString fileFor(QString run, const QByteArray &suffix);
    QStringList lines(const QString &name) const;
};
