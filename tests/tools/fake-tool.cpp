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
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Words = std::vector<std::string>;

const std::string asciiLine = "0123456789abcde\n";

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
            const auto found = m_verbs.find(verb);
            if (found == m_verbs.end()) {
                put(STDERR_FILENO, "fake-tool: unknown verb " + verb + '\n');
                _exit(122);
            }
            found->second();
        }
    }

private:
    std::string word() { return m_next < m_words.size() ? m_words[m_next++] : std::string(); }
    std::size_t number() { return std::stoull(word()); }
    Words take(std::size_t count)
    {
        const auto begin = m_words.begin() + static_cast<std::ptrdiff_t>(m_next);
        m_next += count;
        return Words(begin, begin + static_cast<std::ptrdiff_t>(count));
    }
    static void touch(const std::string &path) { std::ofstream(path).flush(); }
    static void tell(const std::string &text) { put(STDOUT_FILENO, text); }

    void grandchild()
    {
        const Words words = take(number());
        if (fork() == 0) {
            Script(words).run();
            _exit(0);
        }
    }
    void letters()
    {
        const std::size_t count = number();
        fill(STDOUT_FILENO, count, "\u00e4\u20ac\U0001f600", number());
    }
    static void tellVariable(const std::string &name)
    {
        const char *value = std::getenv(name.c_str());
        tell(value ? value : "(unset)");
    }

    Words m_words;
    std::size_t m_next = 0;
    const std::map<std::string, std::function<void()>> m_verbs{
        {"out", [this] { put(STDOUT_FILENO, unescaped(word())); }},
        {"err", [this] { put(STDERR_FILENO, unescaped(word())); }},
        {"fill", [this] { fill(STDOUT_FILENO, number(), asciiLine, 1 << 16); }},
        {"errfill", [this] { fill(STDERR_FILENO, number(), asciiLine, 1 << 16); }},
        {"letters", [this] { letters(); }},
        {"drained", [] { waitFor(isDrained); }},
        {"until", [this] { waitFor([path = word()] { return std::filesystem::exists(path); }); }},
        {"touch", [this] { touch(word()); }},
        {"pidfile", [this] { touch(word() + '/' + std::to_string(getpid())); }},
        {"hang", [] { hang(); }},
        {"ignore-term", [] { std::signal(SIGTERM, SIG_IGN); }},
        {"close-output", [] { static_cast<void>(close(STDOUT_FILENO) + close(STDERR_FILENO)); }},
        {"grandchild", [this] { grandchild(); }},
        {"die", [this] { raise(static_cast<int>(number())); }},
        {"exit", [this] { _exit(static_cast<int>(number())); }},
        {"pid", [] { tell(std::to_string(getpid())); }},
        {"nice", [] { tell(std::to_string(getpriority(PRIO_PROCESS, 0))); }},
        {"descriptors", printDescriptors},
        {"signals", printSignals},
        {"environment", [this] { tellVariable(word()); }},
        {"arguments", [this] { tell(quoted(take(m_words.size() - m_next))); }},
    };
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
