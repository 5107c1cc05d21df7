// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/AccessPolicy.h"
#include "api/ApiCall.h"
#include "api/Cluster.h"
#include "api/Disturbance.h"
#include "api/Options.h"
#include "logs/LogPace.h"
#include "server/TlsIdentity.h"

#include <httplib.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tidewright::demo {

/// The HTTP server on 127.0.0.1. Every cluster lives below a path of its own name; every request gets an
/// answer at once, a Status object when there is nothing better. The clusters must outlive the server, and
/// the server the process's other threads: it is ended with the process.
class ApiServer
{
public:
    /// identity is null for plain HTTP.
    ApiServer(const Options &options, std::vector<Cluster *> clusters, const TlsIdentity *identity);

    /// Binds; returns the port, or -1 when it cannot be had.
    int bind(int port);

    /// Serves until the process ends.
    void run();

private:
    void handle(const httplib::Request &request, httplib::Response &response);
    void serve(const httplib::Request &request, httplib::Response &response);
    void serveCluster(Cluster &cluster, std::vector<std::string> path, const httplib::Request &request,
        httplib::Response &response);
    void serveSchema(
        const Cluster &cluster, const std::vector<std::string> &path, httplib::Response &response);
    void serveResource(const ApiCall &call);
    void control(const httplib::Request &request, httplib::Response &response);

    std::vector<Cluster *> m_clusters;
    Disturbance m_disturbance;
    const AccessPolicy m_access;
    const std::chrono::milliseconds m_bookmarkInterval;
    LogPace m_logPace;
    std::unique_ptr<httplib::Server> m_server;
    int m_socket = -1;
};

} // namespace tidewright::demo
