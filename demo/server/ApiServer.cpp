// SPDX-License-Identifier: GPL-3.0-or-later
#include "server/ApiServer.h"

#include "api/Discovery.h"
#include "api/Metrics.h"
#include "api/PodLogs.h"
#include "api/Reads.h"
#include "api/Watch.h"
#include "changes/Writes.h"
#include "schema/OpenApi.h"
#include "server/ConnectionThreads.h"
#include "store/ApiError.h"

#include <sys/socket.h>

namespace tidewright::demo {

namespace {

std::unique_ptr<httplib::Server> newServer(const TlsIdentity *identity)
{
    if (!identity) {
        return std::make_unique<httplib::Server>();
    }
    return std::make_unique<httplib::SSLServer>(identity->certificate(), identity->key());
}

bool asksForUpgrade(const httplib::Request &request)
{
    return request.has_header("Upgrade");
}

} // namespace

ApiServer::ApiServer(const Options &options, std::vector<Cluster *> clusters, const TlsIdentity *identity)
    : m_clusters(std::move(clusters))
    , m_disturbance(options)
    , m_access(options.mayNot)
    , m_bookmarkInterval(options.bookmarkMs)
    , m_server(newServer(identity))
{
    m_server->new_task_queue = [] { return new ConnectionThreads; };
    m_server->set_tcp_nodelay(true);
    m_server->set_keep_alive_max_count(1000000);
    m_server->set_keep_alive_timeout(5);
    m_server->set_read_timeout(10);
    // A reader that pauses is not gone: streams wait for it.
    m_server->set_write_timeout(24 * 3600);
    m_server->set_socket_options([this](int socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        m_socket = socket;
    });
    const auto handler
        = [this](const httplib::Request &request, httplib::Response &response) { handle(request, response); };
    m_server->Get(".*", handler);
    m_server->Post(".*", handler);
    m_server->Put(".*", handler);
    m_server->Patch(".*", handler);
    m_server->Delete(".*", handler);
    m_server->Options(".*", handler);
}

int ApiServer::bind(int port)
{
    if (!m_server->is_valid()) {
        return -1;
    }
    if (port == 0) {
        port = m_server->bind_to_any_port("127.0.0.1");
    } else if (!m_server->bind_to_port("127.0.0.1", port)) {
        return -1;
    }
    // The library's own backlog of five loses connections when a hundred log streams open at once.
    if (port > 0) {
        ::listen(m_socket, 512);
    }
    return port;
}

void ApiServer::run()
{
    m_server->listen_after_bind();
}

void ApiServer::handle(const httplib::Request &request, httplib::Response &response)
{
    try {
        serve(request, response);
    } catch (const ApiError &error) {
        answer(response, error.statusText(), error.code());
    } catch (const std::exception &error) {
        answer(response, ApiError(500, "InternalError", error.what()).statusText(), 500);
    }
}

void ApiServer::serve(const httplib::Request &request, httplib::Response &response)
{
    std::vector<std::string> path = splitPath(request.path);
    if (path == std::vector<std::string>{"demo", "control"}) {
        control(request, response);
        return;
    }
    m_disturbance.pass();
    for (Cluster *cluster : m_clusters) {
        if (!path.empty() && path[0] == cluster->name) {
            path.erase(path.begin());
            serveCluster(*cluster, std::move(path), request, response);
            return;
        }
    }
    throw ApiError::ofCode(404);
}

void ApiServer::serveCluster(Cluster &cluster, std::vector<std::string> path, const httplib::Request &request,
    httplib::Response &response)
{
    if (const auto resource = parseResourcePath(path, cluster.store)) {
        serveResource({cluster, request, response, *resource});
        return;
    }
    if (const auto metrics = parseMetricsPath(path, cluster)) {
        const ApiCall call{cluster, request, response, *metrics};
        m_access.check(call);
        readMetrics(call);
        return;
    }
    if (request.method == "POST" && isRulesReview(path)) {
        answer(response, toText(m_access.review(cluster)), 201);
        return;
    }
    if (request.method != "GET" && request.method != "HEAD") {
        throw ApiError(path.size() > 2 ? 404 : 405, path.size() > 2 ? "NotFound" : "MethodNotAllowed",
            "the demo cluster does not serve " + request.method + ' ' + request.path);
    }
    if (path.size() == 1 && (path[0] == "healthz" || path[0] == "livez" || path[0] == "readyz")) {
        response.set_content("ok", "text/plain");
    } else if (const auto text = discoveryText(path, request.get_header_value("User-Agent"), cluster)) {
        answer(response, *text);
    } else {
        serveSchema(cluster, path, response);
    }
}

void ApiServer::serveSchema(
    const Cluster &cluster, const std::vector<std::string> &path, httplib::Response &response)
{
    if (path.size() < 2 || path[0] != "openapi") {
        throw ApiError::ofCode(404);
    }
    if (path[1] == "v2" && path.size() == 2) {
        response.set_content(
            openApiV2Protobuf(), "application/com.github.proto-openapi.spec.v2.v1.0+protobuf");
    } else if (path[1] == "v3" && path.size() == 2) {
        answer(response, openApiV3Index('/' + cluster.name));
    } else {
        std::string wanted;
        for (size_t i = 2; i < path.size(); ++i) {
            wanted += (wanted.empty() ? "" : "/") + path[i];
        }
        const auto document = path[1] == "v3" ? openApiV3Document(wanted) : std::nullopt;
        if (!document) {
            throw ApiError::ofCode(404);
        }
        answer(response, *document);
    }
}

void ApiServer::serveResource(const ApiCall &call)
{
    const std::string &method = call.request.method;
    const std::string &subresource = call.path.subresource;
    m_access.check(call);
    if (asksForUpgrade(call.request) || isConnection(subresource)) {
        throw ApiError::notServed("connections into containers (exec, cp, attach, port-forward)");
    }
    if (!subresource.empty() && !call.type().hasSubresource(subresource)) {
        throw ApiError::ofCode(404);
    }
    const bool reads = method == "GET" || method == "HEAD";
    if (reads && subresource == "log") {
        readLogs(call, m_logPace, m_disturbance);
    } else if (reads && call.path.name.empty() && call.flag("watch")) {
        watchList(call, m_disturbance, m_bookmarkInterval);
    } else if (reads) {
        call.path.name.empty() ? readList(call) : readObject(call);
    } else if (method == "POST") {
        createObject(call);
    } else if (method == "PUT" && !call.path.name.empty() && subresource != "log") {
        replaceObject(call);
    } else if (method == "PATCH" && !call.path.name.empty() && subresource != "log") {
        patchObject(call);
    } else if (method == "DELETE" && subresource.empty()) {
        call.path.name.empty() ? deleteCollection(call) : deleteObject(call);
    } else {
        throw ApiError(
            405, "MethodNotAllowed", "the server does not allow this method on the requested resource");
    }
}

void ApiServer::control(const httplib::Request &request, httplib::Response &response)
{
    const json wanted = request.body.empty() ? json::object() : json::parse(request.body, nullptr, false);
    json answered = m_disturbance.change(wanted);
    const long long changes = numberAt(wanted, "/changePods");
    if (changes < 0 || changes > 1000000) {
        throw ApiError::badRequest("changePods must be a number from 0 to 1000000");
    }
    m_clusters.front()->load.change(size_t(changes));
    for (Cluster *cluster : m_clusters) {
        if (flagAt(wanted, "/forget")) {
            cluster->store.forgetChanges();
        }
        answered["versions"][cluster->name] = std::to_string(cluster->store.version());
    }
    answered["logLines"] = m_logPace.lines();
    answer(response, toText(answered));
}

} // namespace tidewright::demo
