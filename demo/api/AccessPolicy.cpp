// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/AccessPolicy.h"

#include "api/Metrics.h"
#include "store/ApiError.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace tidewright::demo {

namespace {

const std::array<std::string, 8> verbs{
    "create", "delete", "deletecollection", "get", "list", "patch", "update", "watch"};
const std::array<std::string, 3> connections{"attach", "exec", "portforward"};

std::string verbOf(const ApiCall &call)
{
    const std::string &method = call.request.method;
    const bool isOne = !call.path.name.empty();
    if (isConnection(call.path.subresource) || method == "POST") {
        return "create";
    }
    if (method == "PUT" || method == "PATCH") {
        return method == "PUT" ? "update" : "patch";
    }
    if (method == "DELETE") {
        return isOne ? "delete" : "deletecollection";
    }
    return call.flag("watch") ? "watch" : isOne ? "get" : "list";
}

json rule(const json &allowed, const std::string &group, const std::string &resource)
{
    return {{"verbs", allowed}, {"apiGroups", {group}}, {"resources", {resource}}};
}

} // namespace

bool isRulesReview(const std::vector<std::string> &path)
{
    return path == std::vector<std::string>{"apis", "authorization.k8s.io", "v1", "selfsubjectrulesreviews"};
}

bool isConnection(const std::string &subresource)
{
    return std::find(connections.begin(), connections.end(), subresource) != connections.end();
}

AccessPolicy::AccessPolicy(const std::string &denied)
{
    std::istringstream pairs(denied);
    for (std::string pair; std::getline(pairs, pair, ',');) {
        std::istringstream words(pair);
        std::string verb;
        std::string resource;
        std::string more;
        const bool isPair = words >> verb >> resource && !(words >> more);
        if (!isPair || (verb != "*" && std::find(verbs.begin(), verbs.end(), verb) == verbs.end())) {
            throw ApiError::badRequest(
                '"' + pair + "\" is not a verb and a resource, such as \"delete pods\"");
        }
        m_denied.emplace_back(verb, resource);
    }
}

bool AccessPolicy::allows(const std::string &verb, const std::string &resource) const
{
    return std::none_of(m_denied.begin(), m_denied.end(), [&](const auto &denied) {
        return (denied.first == "*" || denied.first == verb)
            && (denied.second == "*" || denied.second == resource);
    });
}

void AccessPolicy::check(const ApiCall &call) const
{
    const std::string verb = verbOf(call);
    const std::string part = call.path.subresource.empty() ? "" : '/' + call.path.subresource;
    if (!allows(verb, call.type().plural + part)) {
        throw ApiError::forbidden(call.type(), verb, call.path.ns, call.path.name, part);
    }
}

json AccessPolicy::review(const Cluster &cluster) const
{
    json rules = json::array({rule({"create"}, "authorization.k8s.io", "selfsubjectrulesreviews")});
    const auto add = [&](const std::string &group, const std::string &resource) {
        json allowed = json::array();
        std::copy_if(verbs.begin(), verbs.end(), std::back_inserter(allowed),
            [&](const std::string &verb) { return allows(verb, resource); });
        if (!allowed.empty()) {
            rules.push_back(rule(allowed, group, resource));
        }
    };
    for (const ResourceType *type : servedTypes(cluster)) {
        add(type->group, type->plural);
        for (const std::string &part : type->subresources) {
            add(type->group, type->plural + '/' + part);
        }
    }
    for (const std::string &part : connections) {
        if (allows("create", "pods/" + part)) {
            rules.push_back(rule({"create"}, "", "pods/" + part));
        }
    }
    if (m_denied.empty()) {
        rules = json::array({rule({"*"}, "*", "*")});
    }
    return {{"kind", "SelfSubjectRulesReview"}, {"apiVersion", "authorization.k8s.io/v1"},
        {"metadata", json::object()}, {"spec", json::object()},
        {"status",
            {{"resourceRules", rules},
                {"nonResourceRules",
                    json::array({{{"verbs", {"get"}}, {"nonResourceURLs", {"/api/*", "/version"}}}})},
                {"incomplete", false}}}};
}

} // namespace tidewright::demo
