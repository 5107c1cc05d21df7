// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Json.h"
#include "store/ResourceType.h"

#include <stdexcept>
#include <string>

namespace tidewright::demo {

/// A refusal with its HTTP code, thrown by whatever finds a request wrong and turned into a Status object by
/// the server, the form in which kubectl expects every failure.
class ApiError : public std::runtime_error
{
public:
    ApiError(int code, std::string reason, const std::string &message, json details = nullptr);

    static ApiError badRequest(const std::string &message);
    static ApiError notFound(const ResourceType &type, const std::string &name);
    static ApiError alreadyExists(const ResourceType &type, const std::string &name);
    static ApiError conflict(const ResourceType &type, const std::string &name);
    static ApiError invalid(const ResourceType &type, const std::string &name, const std::string &message);
    /// `part` is empty, or a subresource behind a slash.
    static ApiError forbidden(const ResourceType &type, const std::string &verb, const std::string &ns,
        const std::string &name = {}, const std::string &part = {});
    /// Of a parameter of a list or watch.
    static ApiError invalidOption(const std::string &name, const std::string &message);
    static ApiError tooLargeVersion(std::uint64_t asked, std::uint64_t current);
    /// Of a list that cannot be continued as it was: `token` goes on with what there is now.
    static ApiError expiredToken(const std::string &token);
    static ApiError notServed(const std::string &what);

    /// What a server that always answers with this code would say.
    static ApiError ofCode(int code);

    int code() const { return m_code; }
    std::string statusText() const;

private:
    int m_code;
    std::string m_reason;
    json m_details;
    std::string m_continue;
};

} // namespace tidewright::demo
