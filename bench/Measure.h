// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tidewright::bench {

/// Seconds of CPU: of the calling thread, of ended children.
double threadCpuSeconds();
double childrenCpuSeconds();

/// Seconds on the wall, from an arbitrary start.
double wallSeconds();

double median(std::vector<double> values);

/// Prints one budget as a line and remembers whether it was kept.
class Report
{
public:
    void ratio(
        const std::string &what, double measured, double reference, double limit, const std::string &unit);
    /// The same for a figure that has a limit of its own.
    void absolute(const std::string &what, double measured, double limit, const std::string &unit);
    bool allKept() const { return m_allKept; }

private:
    bool m_allKept = true;
};

} // namespace tidewright::bench
