// SPDX-License-Identifier: GPL-3.0-or-later
#include "store/ApiError.h"

#include <map>

namespace tidewright::demo {

namespace {

json detailsOf(const ResourceType &type, const std::string &name)
{
    json details{{"kind", type.plural}};
    if (!name.empty()) {
        details["name"] = name;
    }
    if (!type.group.empty()) {
        details["group"] = type.group;
    }
    return details;
}

std::string qualified(const ResourceType &type)
{
    return type.group.empty() ? type.plural : type.plural + '.' + type.group;
}

} // namespace

ApiError::ApiError(int code, std::string reason, const std::string &message, json details)
    : std::runtime_error(message)
    , m_code(code)
    , m_reason(std::move(reason))
    , m_details(std::move(details))
{
}

ApiError ApiError::badRequest(const std::string &message)
{
    return {400, "BadRequest", message};
}

ApiError ApiError::notFound(const ResourceType &type, const std::string &name)
{
    return {404, "NotFound", qualified(type) + " \"" + name + "\" not found", detailsOf(type, name)};
}

ApiError ApiError::alreadyExists(const ResourceType &type, const std::string &name)
{
    return {
        409, "AlreadyExists", qualified(type) + " \"" + name + "\" already exists", detailsOf(type, name)};
}

ApiError ApiError::conflict(const ResourceType &type, const std::string &name)
{
    return {409, "Conflict",
        "Operation cannot be fulfilled on " + qualified(type) + " \"" + name
            + "\": the object has been modified; please apply your changes to the latest version and try "
              "again",
        detailsOf(type, name)};
}

ApiError ApiError::invalid(const ResourceType &type, const std::string &name, const std::string &message)
{
    json details = detailsOf(type, name);
    details["kind"] = type.kind;
    // kubectl prints the causes of an invalid object, not the message.
    const size_t colon = message.find(": ");
    const bool namesField = colon != message.npos;
    details["causes"] = json::array(
        {{{"reason", "FieldValueInvalid"}, {"field", namesField ? message.substr(0, colon) : "object"},
            {"message", namesField ? message.substr(colon + 2) : message}}});
    return {422, "Invalid",
        type.kind + (type.group.empty() ? "" : '.' + type.group) + " \"" + name + "\" is invalid: " + message,
        details};
}

ApiError ApiError::forbidden(const ResourceType &type, const std::string &verb, const std::string &ns,
    const std::string &name, const std::string &part)
{
    return {403, "Forbidden",
        qualified(type) + (name.empty() ? "" : " \"" + name + '"') + " is forbidden: User \"demo\" cannot "
            + verb + " resource \"" + type.plural + part + "\" in API group \"" + type.group + '"'
            + (ns.empty() ? " at the cluster scope" : " in the namespace \"" + ns + '"'),
        detailsOf(type, name)};
}

ApiError ApiError::invalidOption(const std::string &name, const std::string &message)
{
    return {422, "Invalid", "ListOptions.meta.k8s.io \"\" is invalid: " + name + ": Forbidden: " + message,
        {{"group", "meta.k8s.io"}, {"kind", "ListOptions"},
            {"causes",
                json::array({{{"reason", "FieldValueForbidden"}, {"message", "Forbidden: " + message},
                    {"field", name}}})}}};
}

ApiError ApiError::tooLargeVersion(std::uint64_t asked, std::uint64_t current)
{
    return {504, "Timeout",
        "Timeout: Too large resource version: " + std::to_string(asked)
            + ", current: " + std::to_string(current),
        {{"retryAfterSeconds", 1},
            {"causes",
                json::array(
                    {{{"reason", "ResourceVersionTooLarge"}, {"message", "Too large resource version"}}})}}};
}

ApiError ApiError::expiredToken(const std::string &token)
{
    ApiError error(410, "Expired",
        "The provided continue parameter is too old to display a consistent list result. The continue token "
        "of "
        "this answer goes on with what there is now; start anew for a list of one moment.");
    error.m_continue = token;
    return error;
}

ApiError ApiError::notServed(const std::string &what)
{
    return {501, "NotImplemented", "the demo cluster does not serve " + what};
}

ApiError ApiError::ofCode(int code)
{
    static const std::map<int, std::pair<std::string, std::string>> sentences{
        {401, {"Unauthorized", "Unauthorized"}},
        {403, {"Forbidden", "access to the demo cluster is forbidden: User \"demo\" cannot do this"}},
        {404, {"NotFound", "the server could not find the requested resource"}},
        {408, {"Timeout", "the request took too long"}},
        {429,
            {"TooManyRequests",
                "the server has received too many requests and has asked us to try again later"}},
        {500, {"InternalError", "an error on the server has prevented the request from succeeding"}},
        {503, {"ServiceUnavailable", "the server is currently unable to handle the request"}},
        {504, {"Timeout", "the request did not complete within the allotted time"}},
    };
    const auto found = sentences.find(code);
    if (found != sentences.end()) {
        return {code, found->second.first, found->second.second};
    }
    return {code, "", "the demo cluster answers every request with " + std::to_string(code)};
}

std::string ApiError::statusText() const
{
    json status{{"kind", "Status"}, {"apiVersion", "v1"}, {"metadata", json::object()}, {"status", "Failure"},
        {"message", what()}, {"code", m_code}};
    if (!m_continue.empty()) {
        status["metadata"]["continue"] = m_continue;
    }
    if (!m_reason.empty()) {
        status["reason"] = m_reason;
    }
    if (!m_details.is_null()) {
        status["details"] = m_details;
    }
    return toText(status);
}

} // namespace tidewright::demo
