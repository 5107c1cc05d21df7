// SPDX-License-Identifier: GPL-3.0-or-later
#include "logs/LogVoice.h"

#include "objects/Names.h"

#include <algorithm>
#include <array>

namespace tidewright::demo {

namespace {

std::uint64_t historyOf(const json &pod, std::uint64_t seed)
{
    const json &annotations = at(pod, "/metadata/annotations");
    if (annotations.is_object() && annotations.contains("demo/log-lines")) {
        return std::strtoull(textAt(annotations, "/demo~1log-lines", "0").c_str(), nullptr, 10);
    }
    return 120 + seed % 200;
}

template <size_t N> const char *pick(const std::array<const char *, N> &choices, std::uint64_t chance)
{
    return choices[chance % N];
}

std::string accessLine(std::uint64_t chance)
{
    static constexpr std::array paths{
        "/", "/api/items?page=2", "/healthz", "/static/app.js", "/api/cart", "/login"};
    static constexpr std::array codes{"200", "200", "200", "304", "404", "502"};
    return "10.42." + std::to_string(chance % 200) + ".7 \"GET " + pick(paths, chance / 7) + " HTTP/1.1\" "
        + pick(codes, chance / 64) + ' ' + std::to_string(chance / 3 % 9000);
}

std::string structuredLine(std::uint64_t chance)
{
    static constexpr std::array levels{"info", "info", "debug", "warn", "error"};
    static constexpr std::array messages{
        "order accepted", "cache refreshed", "retrying request", "slow query", "payment declined by bank"};
    return std::string("level=") + pick(levels, chance / 5) + " msg=\"" + pick(messages, chance / 11)
        + "\" took=" + std::to_string(chance % 900) + "ms";
}

std::string databaseLine(std::uint64_t chance)
{
    static constexpr std::array messages{"checkpoint starting: time",
        "checkpoint complete: wrote 211 buffers", "duration: 1203.551 ms  statement: SELECT * FROM orders",
        "connection received: host=10.42.3.9 port=55012"};
    return std::string("LOG:  ") + pick(messages, chance);
}

std::string plainLine(std::uint64_t chance)
{
    static constexpr std::array messages{"worker idle", "processed batch of 64",
        "größere Warteschlange als üblich ⚓", "heartbeat ok", "日本語のメッセージ"};
    return pick(messages, chance);
}

} // namespace

LogVoice::LogVoice(const json &pod, const std::string &container)
    : m_seed(stableHash(textAt(pod, "/metadata/name") + '/' + container))
    , m_history(historyOf(pod, m_seed))
{
    m_silent = container == "config-reloader" || container == "agent" || container == "shell";
    if (container == "nginx" || container == "mesh-proxy") {
        m_style = Style::Access;
    } else if (container == "postgres" || container == "cache") {
        m_style = Style::Database;
    } else {
        m_style = m_seed % 3 == 0 ? Style::Plain : Style::Structured;
    }
    if (m_silent) {
        m_history = 0;
    }
}

std::string LogVoice::body(std::uint64_t number, std::uint64_t chance) const
{
    if (number % 50 == 0) {
        return "dump " + std::string(1500 + chance % 2500, char('a' + chance % 26));
    }
    switch (m_style) {
    case Style::Access:
        return accessLine(chance);
    case Style::Structured:
        return structuredLine(chance);
    case Style::Database:
        return databaseLine(chance);
    case Style::Plain:
        break;
    }
    return plainLine(chance);
}

std::string LogVoice::line(std::uint64_t number) const
{
    std::uint64_t chance = (m_seed ^ number) * 0x9e3779b97f4a7c15ULL;
    chance ^= chance >> 29;
    const std::string text = "seq=" + std::to_string(number) + ' ' + body(number, chance);
    if (number % 20 == 7) {
        return "\x1b[33m" + text + "\x1b[0m\n";
    }
    return text + '\n';
}

} // namespace tidewright::demo
