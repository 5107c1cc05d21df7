// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

struct Outcome
{
    int exitCode = -1; // -1: did not end in time
    QString output;
    QString errors;
};

// A demo cluster server for one test, and kubectl runs against it. Each has a home folder of its own, so that
// no client sees what another one cached.
class DemoProcess
{
public:
    explicit DemoProcess(const QStringList &arguments, const QString &kubectl = {});
    ~DemoProcess();

    bool isReady() const { return !m_kubeconfig.isEmpty(); }
    QString kubeconfig() const { return m_kubeconfig; }
    QProcess &server() { return m_server; }

    Outcome kubectl(const QStringList &arguments, int timeoutMs = 20000, const QString &editor = {}) const;

    // Ready to start; the caller starts and ends it.
    void prepareKubectl(QProcess &process, const QStringList &arguments) const;

    // POST /demo/control; `answer` gets the reply with its head.
    bool control(const QByteArray &settings, QByteArray *answer = nullptr) const;

    QString writeFile(const QString &name, const QByteArray &content) const;

private:
    QTemporaryDir m_home;
    QProcess m_server;
    QString m_kubectl;
    QString m_kubeconfig;
};
