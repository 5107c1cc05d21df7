// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QThread>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace tidewright::test {

void RecordingConsole::addEntry(
    const QString &command, const QString &response, const std::optional<ConsoleError> &error)
{
    QString entry = command + u'|' + response + u'|';
    if (error) {
        entry += error->domain == u"Console" && error->code == -1 ? error->description : u"(odd error)"_s;
    }
    if (QThread::currentThread() != thread()) {
        entry.prepend(u"(wrong thread) "_s);
    }
    entries.append(entry);
}

QString fakeToolPath()
{
    return QStringLiteral(FAKE_TOOL_PATH);
}

QStringList fakeTool(const QByteArray &script)
{
    return QStringList{fakeToolPath()} + QString::fromUtf8(script).split(u' ');
}

ShellResult runToEnd(const std::shared_ptr<Shell> &shell, const QStringList &arguments)
{
    auto result = inBackground([shell, arguments] { return shell->run(arguments, false); });
    return arrives(result) ? result.get() : ShellResult{{}, u"(still running)"_s};
}

CapturedOutput::CapturedOutput()
{
    std::fflush(stdout);
    m_before = ::dup(STDOUT_FILENO);
    if (m_file.open()) {
        ::dup2(m_file.handle(), STDOUT_FILENO);
    }
}

CapturedOutput::~CapturedOutput()
{
    std::fflush(stdout);
    ::dup2(m_before, STDOUT_FILENO);
    ::close(m_before);
}

QString CapturedOutput::text() const
{
    std::fflush(stdout);
    QFile file(m_file.fileName());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

Pipe fullPipe()
{
    Pipe pipe = Pipe::make();
    const int writer = pipe.writeEnd.get();
    ::fcntl(writer, F_SETFL, O_NONBLOCK);
    while (::write(writer, "x", 1) == 1) { }
    ::fcntl(writer, F_SETFL, 0);
    return pipe;
}

NoDescriptorsLeft::NoDescriptorsLeft()
{
    do {
        m_taken.emplace_back(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    } while (m_taken.back().isOpen());
}

bool isAlive(qint64 pid)
{
    QFile stat(u"/proc/%1/stat"_s.arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QByteArray line = stat.readAll();
    const qsizetype state = line.lastIndexOf(')') + 2;
    return state < line.size() && line[state] != 'Z' && line[state] != 'X';
}

QList<qint64> pidsIn(const QString &folder)
{
    QList<qint64> pids;
    for (const QString &name : QDir(folder).entryList(QDir::Files)) {
        pids.append(name.toLongLong());
    }
    return pids;
}

} // namespace tidewright::test
