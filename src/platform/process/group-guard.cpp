// SPDX-License-Identifier: GPL-3.0-or-later
// group-guard
//
// Standard input is a socket to the application. Each message is a pid_t: a positive one names a process
// group that is to end with the application, a negative one takes that back. When the other end is gone, so
// is the application, and the groups that are left are killed.
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <set>
#include <sys/socket.h>
#include <unistd.h>

int main()
{
    if (fork() != 0) {
        return 0; // the application waits for this one, and has no child in the other
    }
    setsid(); // Ctrl+C in the application's terminal is not meant for this
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGPIPE}) {
        std::signal(signal, SIG_IGN);
    }
    close_range(3, ~0U, 0);
    if (const int null = open("/dev/null", O_RDWR | O_CLOEXEC); null >= 0) {
        dup2(null, STDOUT_FILENO); // whoever reads what the application prints sees its end
        dup2(null, STDERR_FILENO);
    }
    if (chdir("/") != 0) {
        // A folder that cannot be unmounted meanwhile is the smaller evil.
    }
    std::set<pid_t> groups;
    for (;;) {
        pid_t number = 0;
        const ssize_t got = recv(STDIN_FILENO, &number, sizeof number, 0);
        if (got == sizeof number && number > 0) {
            groups.insert(number);
        } else if (got == sizeof number) {
            groups.erase(-number);
        } else if (got >= 0 || errno != EINTR) {
            break;
        }
    }
    for (const pid_t group : groups) {
        kill(-group, SIGKILL);
    }
    return 0;
}
