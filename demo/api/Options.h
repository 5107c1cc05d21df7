// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace tidewright::demo {

/// What the command line of the demo cluster may say. Read once at start; the values that a running server
/// can change are copied into its Disturbance.
struct Options
{
    std::string kubeconfigPath; ///< empty: a file in a private folder that goes away with the server
    int port = 0; ///< 0: any free port
    int fleetPods = 0; ///< pods generated into namespace "fleet" of the first context
    int latencyMs = 0; ///< per request
    int failCode = 0; ///< 0: requests are served
    int changesPerSecond = 0; ///< to pods of "fleet"
    int history = 10000; ///< changes of each kind that watches and pages can go back
    int bookmarkMs = 60000;
    std::string mayNot; ///< see AccessPolicy.h
    std::string disturb; ///< faults of watches, see StreamFaults.h
    double logRate = 0; ///< lines per second over all open streams; 0: a few per second and stream
    bool hang = false;
    bool tls = false;
    bool wrongCa = false;
    bool still = false;
    bool hostile = false;
    bool noMetrics = false; ///< nobody measures what pods and nodes use
    bool exitWithParent = false;
    bool help = false;
};

struct ParsedOptions
{
    Options options;
    std::string error; ///< empty when the arguments are good
};

/// Arguments without the program's name.
ParsedOptions parseOptions(const std::vector<std::string> &arguments);

std::string usage();

} // namespace tidewright::demo
