// SPDX-License-Identifier: GPL-3.0-or-later
#include "Children.h"

#include "Measure.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace tidewright::bench {

namespace {

/// Those of every thread of this process.
std::vector<std::string> children()
{
    std::vector<std::string> ids;
    std::error_code ignored;
    for (const auto &thread : std::filesystem::directory_iterator("/proc/self/task", ignored)) {
        std::ifstream file(thread.path() / "children");
        for (std::string id; file >> id;) {
            ids.push_back(id);
        }
    }
    return ids;
}

/// User and system time of a process, in clock ticks; 0 when it has gone.
double ticksOf(const std::string &id)
{
    constexpr int fieldsBefore = 11; // between the name, which may hold blanks, and the times
    std::ifstream file("/proc/" + id + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t nameEnd = line.rfind(')');
    std::istringstream fields(nameEnd == std::string::npos ? std::string() : line.substr(nameEnd + 1));
    std::string skipped;
    for (int i = 0; i < fieldsBefore; ++i) {
        fields >> skipped;
    }
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return user + system;
}

struct Kilobytes
{
    long resident = 0; ///< at most so far
    long ofFiles = 0; ///< of these, the program's own file and others
};

/// Zeros for other programs, and for a child that still shares the memory of this process.
Kilobytes memoryOfKubectl(const std::string &id)
{
    std::ifstream file("/proc/" + id + "/status");
    std::string name;
    file >> name >> name; // "Name:" comes first
    Kilobytes memory;
    for (std::string word; name == "kubectl" && file >> word;) {
        if (word == "VmHWM:") {
            file >> memory.resident;
        } else if (word == "RssFile:") {
            file >> memory.ofFiles;
        }
    }
    return memory;
}

} // namespace

double processCpuSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double allChildrenCpuSeconds()
{
    double ticks = 0;
    for (const std::string &id : children()) {
        ticks += ticksOf(id);
    }
    return childrenCpuSeconds() + ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

PeakMemory::PeakMemory()
    : m_thread([this] {
        while (!m_isOver) {
            for (const std::string &id : children()) {
                const Kilobytes memory = memoryOfKubectl(id);
                m_resident = std::max(m_resident.load(), memory.resident);
                m_own = std::max(m_own.load(), memory.resident - memory.ofFiles);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    })
{
}

PeakMemory::~PeakMemory()
{
    m_isOver = true;
    m_thread.join();
}

} // namespace tidewright::bench
