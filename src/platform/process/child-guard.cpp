// SPDX-License-Identifier: GPL-3.0-or-later
// child-guard PARENT-PID NICE DESCRIPTORS PROGRAM [ARGUMENT...]
//
// posix_spawn cannot ask the kernel to end a child together with its parent, so the application starts this,
// which asks and then becomes PROGRAM. The request survives exec. NICE is added to the CPU priority value (0
// leaves it), and PARENT-PID may be 0: then the program goes on without the parent. DESCRIPTORS is the soft
// limit on open descriptors (0 leaves it): the application raises its own, but a program may not expect
// numbers above 1023. Of the descriptors only the three standard ones are passed on.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

int main(int argc, char **argv)
{
    if (argc < 5) {
        std::fputs("usage: child-guard PARENT-PID NICE DESCRIPTORS PROGRAM [ARGUMENT...]\n", stderr);
        return 2;
    }
    if (const int parent = std::atoi(argv[1]); parent != 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        // The parent may have died before the request was made; then nobody is left to work for.
        if (getppid() != parent) {
            return 1;
        }
    }
    if (const int niceness = std::atoi(argv[2]); niceness != 0 && nice(niceness) == -1) {
        // A child at full speed is better than none.
    }
    rlimit limit{};
    if (const rlim_t wanted = std::strtoull(argv[3], nullptr, 10);
        wanted != 0 && getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = wanted;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    // Children run in a process group of their own. One that reads the terminal the application was started
    // from would be stopped for ever; ignoring the signal turns that read into an error that the child
    // reports. So would be one that restores the terminal's settings, as kubectl does behind an editor.
    std::signal(SIGTTIN, SIG_IGN);
    std::signal(SIGTTOU, SIG_IGN);
    // Whoever started the application, or a library in it, may have left descriptors open that are not
    // close-on-exec.
    close_range(3, ~0U, 0);
    execv(argv[4], argv + 4);
    std::fprintf(stderr, "%s: %s\n", argv[4], std::strerror(errno));
    return 127;
}
