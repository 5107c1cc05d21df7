// SPDX-License-Identifier: GPL-3.0-or-later
// A program that misbehaves on demand. Its arguments are a script, run from left to right:
//
//   out TEXT, err TEXT    one write; TEXT may hold \n \t \\ and \xHH
//   fill N, errfill N     N bytes of ASCII lines, as fast as they go
//   letters N CHUNK       N bytes of two- to four-byte characters, CHUNK bytes per write
//   drained               waits until the reader has emptied the pipe of standard output
//   until PATH            waits until a file exists
//   touch PATH            makes a file; pidfile FOLDER one that is named after the process
//   hang                  waits for a signal for ever; ignore-term first makes it deaf to SIGTERM
//   close-output          closes both output streams
//   grandchild N ...      runs the next N words of the script in a child that shares both streams
//   die N                 ends by signal N; exit N ends with that status; pid prints the process number
//   nice, descriptors, signals, environment NAME
//                         print what was inherited; of signals the ignored and blocked ones
//   arguments ...         prints the rest of the script, one word per line in quotes
//
// With FAKE_TOOL_SCRIPT (words separated by line feeds) in the environment, that is the script, and the
// arguments are those of the program it stands in for. With FAKE_TOOL_RECORD, they are appended to that file,
// quoted, followed by a line with KUBECONFIG.
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Words = std::vector<std::string>;

void put(int stream, const char *bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = write(stream, bytes, count);
        if (written < 0 && errno != EINTR) {
            _exit(120);
        }
        bytes += std::max<ssize_t>(written, 0);
        count -= static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
}

void put(int stream, const std::string &text)
{
    put(stream, text.data(), text.size());
}

std::string unescaped(const std::string &text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
        } else if (const char kind = text[++i]; kind == 'x') {
            result += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            result += kind == 'n' ? '\n' : kind == 't' ? '\t' : kind;
        }
    }
    return result;
}

std::string quoted(const Words &words)
{
    std::string lines;
    for (const std::string &word : words) {
        lines += '"' + word + "\"\n";
    }
    return lines;
}

template <typename Condition> void waitFor(Condition condition)
{
    for (int i = 0; i < 30'000; ++i) {
        if (condition()) {
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    put(STDERR_FILENO, "fake-tool: waited in vain\n");
    _exit(121);
}

bool isDrained()
{
    int waiting = 0;
    return ioctl(STDOUT_FILENO, FIONREAD, &waiting) == 0 && waiting == 0;
}

void fill(int stream, std::size_t count, const std::string &pattern, std::size_t chunk)
{
    std::string block;
    while (block.size() < chunk + pattern.size()) {
        block += pattern;
    }
    for (std::size_t done = 0; done < count;) {
        const std::size_t size = std::min(chunk, count - done);
        put(stream, block.data() + done % pattern.size(), size);
        done += size;
    }
}

void printDescriptors()
{
    Words found;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone; // the descriptor that reads this very folder
        const auto target = std::filesystem::read_symlink(entry.path(), gone);
        if (target.string().rfind("/proc/", 0) != 0) {
            found.push_back(entry.path().filename().string());
        }
    }
    std::sort(found.begin(), found.end());
    for (const std::string &descriptor : found) {
        put(STDOUT_FILENO, descriptor + '\n');
    }
}

void printSignals()
{
    sigset_t blocked;
    sigprocmask(SIG_SETMASK, nullptr, &blocked);
    for (int signal = 1; signal < 32; ++signal) { // above them are those that the C library keeps for itself
        struct sigaction action
        {
        };
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN || sigismember(&blocked, signal) == 1) {
            put(STDOUT_FILENO, std::to_string(signal) + '\n');
        }
    }
}

[[noreturn]] void hang()
{
    for (;;) {
        pause();
    }
}

class Script
{
public:
    explicit Script(Words words)
        : m_words(std::move(words))
    {
    }

    void run()
    {
        while (m_next < m_words.size()) {
            const std::string verb = word();
            if (!write(verb) && !wait(verb) && !end(verb) && !tell(verb)) {
                put(STDERR_FILENO, "fake-tool: unknown verb " + verb + '\n');
                _exit(122);
            }
        }
    }

private:
    std::string word() { return m_next < m_words.size() ? m_words[m_next++] : std::string(); }
    std::size_t number() { return std::stoull(word()); }
    Words rest() { return Words(m_words.begin() + static_cast<std::ptrdiff_t>(m_next), m_words.end()); }

    bool write(const std::string &verb)
    {
        if (verb == "out" || verb == "err") {
            put(verb == "out" ? STDOUT_FILENO : STDERR_FILENO, unescaped(word()));
        } else if (verb == "fill" || verb == "errfill") {
            fill(verb == "fill" ? STDOUT_FILENO : STDERR_FILENO, number(), "0123456789abcde\n", 1 << 16);
        } else if (verb == "letters") {
            const std::size_t count = number();
            fill(STDOUT_FILENO, count, "\u00e4\u20ac\U0001f600", number());
        } else {
            return false;
        }
        return true;
    }

    bool wait(const std::string &verb)
    {
        if (verb == "drained") {
            waitFor(isDrained);
        } else if (verb == "until") {
            waitFor([path = word()] { return std::filesystem::exists(path); });
        } else if (verb == "hang") {
            hang();
        } else if (verb == "ignore-term") {
            std::signal(SIGTERM, SIG_IGN);
        } else {
            return false;
        }
        return true;
    }

    bool end(const std::string &verb)
    {
        if (verb == "close-output") {
            close(STDOUT_FILENO);
            close(STDERR_FILENO);
        } else if (verb == "die") {
            raise(static_cast<int>(number()));
        } else if (verb == "exit") {
            _exit(static_cast<int>(number()));
        } else if (verb == "grandchild") {
            const auto begin = m_words.begin() + static_cast<std::ptrdiff_t>(m_next + 1);
            const auto end = begin + static_cast<std::ptrdiff_t>(number());
            if (fork() == 0) {
                Script(Words(begin, end)).run();
                _exit(0);
            }
            m_next = static_cast<std::size_t>(end - m_words.begin());
        } else {
            return false;
        }
        return true;
    }

    bool tell(const std::string &verb)
    {
        if (verb == "touch") {
            std::ofstream(word()).flush();
        } else if (verb == "pidfile") {
            std::ofstream(word() + '/' + std::to_string(getpid())).flush();
        } else if (verb == "pid") {
            put(STDOUT_FILENO, std::to_string(getpid()));
        } else if (verb == "nice") {
            put(STDOUT_FILENO, std::to_string(getpriority(PRIO_PROCESS, 0)));
        } else if (verb == "descriptors") {
            printDescriptors();
        } else if (verb == "signals") {
            printSignals();
        } else if (verb == "environment") {
            const char *value = std::getenv(word().c_str());
            put(STDOUT_FILENO, value ? value : "(unset)");
        } else if (verb == "arguments") {
            put(STDOUT_FILENO, quoted(rest()));
            m_next = m_words.size();
        } else {
            return false;
        }
        return true;
    }

    Words m_words;
    std::size_t m_next = 0;
};

} // namespace

int main(int argc, char **argv)
{
    Words words(argv + 1, argv + argc);
    if (const char *path = std::getenv("FAKE_TOOL_RECORD")) {
        const char *config = std::getenv("KUBECONFIG");
        std::ofstream(path, std::ios::app)
            << quoted(words) << "KUBECONFIG=" << (config ? config : "(unset)") << '\n';
    }
    if (const char *script = std::getenv("FAKE_TOOL_SCRIPT")) {
        words.clear();
        std::istringstream lines(script);
        for (std::string line; std::getline(lines, line);) {
            words.push_back(line);
        }
    }
    Script(std::move(words)).run();
}
