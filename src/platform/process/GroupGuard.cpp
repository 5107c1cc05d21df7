// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/GroupGuard.h"

#include "platform/desktop/Bundle.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tidewright {

const GroupGuard &GroupGuard::instance()
{
    static const auto *guard = new GroupGuard; // until the end of the process, which its socket tells
    return *guard;
}

GroupGuard::GroupGuard()
{
    const QByteArray program = QFile::encodeName(bundle::auxiliaryExecutable(QStringLiteral("group-guard")));
    std::array<int, 2> ends{-1, -1};
    if (program.isEmpty() || ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return;
    }
    FileDescriptor own(ends[0]);
    const FileDescriptor theirs(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, theirs.get(), STDIN_FILENO);
    QByteArray name("group-guard");
    std::array<char *, 2> arguments{name.data(), nullptr};
    pid_t pid = 0;
    if (::posix_spawn(&pid, program.constData(), &actions, nullptr, arguments.data(), environ) == 0) {
        ::waitpid(pid, nullptr, 0); // it leaves another one behind, which is not ours
        m_socket = std::move(own);
    }
    posix_spawn_file_actions_destroy(&actions);
}

void GroupGuard::tell(pid_t number) const
{
    if (m_socket.isOpen()) {
        while (::send(m_socket.get(), &number, sizeof number, MSG_NOSIGNAL) < 0 && errno == EINTR) { }
    }
}

} // namespace tidewright
