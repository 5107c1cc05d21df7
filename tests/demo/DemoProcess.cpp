// SPDX-License-Identifier: GPL-3.0-or-later
#include "DemoProcess.h"

#include <QFile>
#include <QRegularExpression>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

DemoProcess::DemoProcess(const QStringList &arguments, const QString &kubectl)
    : m_kubectl(kubectl)
{
    m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_server.start(QStringLiteral(DEMO_CLUSTER_PATH), arguments + QStringList{u"--exit-with-parent"_s});
    while (m_server.waitForReadyRead(30000)) {
        if (m_server.canReadLine()) {
            m_kubeconfig = QString::fromUtf8(m_server.readLine()).trimmed().mid(6);
            return;
        }
    }
}

DemoProcess::~DemoProcess()
{
    m_server.terminate();
    if (!m_server.waitForFinished(5000))
        m_server.kill();
    m_server.waitForFinished(5000);
}

void DemoProcess::prepareKubectl(QProcess &process, const QStringList &arguments) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"HOME"_s, m_home.path());
    environment.insert(u"KUBECONFIG"_s, m_kubeconfig);
    process.setProcessEnvironment(environment);
    process.setProgram(m_kubectl);
    process.setArguments(arguments);
}

Outcome DemoProcess::kubectl(const QStringList &arguments, int timeoutMs, const QString &editor) const
{
    QProcess process;
    prepareKubectl(process, arguments);
    QProcessEnvironment environment = process.processEnvironment();
    environment.insert(u"EDITOR"_s, editor);
    process.setProcessEnvironment(environment);
    process.start();
    const bool ended = process.waitForFinished(timeoutMs);
    if (!ended) {
        process.kill();
        process.waitForFinished(5000);
    }
    return {ended ? process.exitCode() : -1, QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError())};
}

bool DemoProcess::control(const QByteArray &settings, QByteArray *answer) const
{
    QFile file(m_kubeconfig);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    static const QRegularExpression address(u"127\\.0\\.0\\.1:(\\d+)"_s);
    const quint16 port = address.match(QString::fromUtf8(file.readAll())).captured(1).toUShort();
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(port);
    target.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const QByteArray request
        = "POST /demo/control HTTP/1.1\r\nHost: demo\r\nConnection: close\r\nContent-Length: "
        + QByteArray::number(settings.size()) + "\r\n\r\n" + settings;
    QByteArray reply;
    if (::connect(socket, reinterpret_cast<sockaddr *>(&target), sizeof target) == 0
        && ::send(socket, request.constData(), size_t(request.size()), 0) == request.size()) {
        char part[1024];
        for (ssize_t got = 0; (got = ::recv(socket, part, sizeof part, 0)) > 0;)
            reply.append(part, got);
    }
    ::close(socket);
    if (answer)
        *answer = reply;
    return reply.startsWith("HTTP/1.1 200");
}

QString DemoProcess::writeFile(const QString &name, const QByteArray &content) const
{
    const QString path = m_home.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        return {};
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}
