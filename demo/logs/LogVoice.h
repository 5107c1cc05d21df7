// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "base/Json.h"

#include <cstdint>
#include <string>

namespace tidewright::demo {

/// What one container writes: line n is always the same text, starts with "seq=n " after its colour codes and
/// ends in a newline. Some containers never say anything.
class LogVoice
{
public:
    LogVoice(const json &pod, const std::string &container);

    bool isSilent() const { return m_silent; }

    /// Lines that were written before anybody looked. The annotation "demo/log-lines" on the pod overrules
    /// the usual couple of hundred.
    std::uint64_t history() const { return m_history; }

    /// Numbers start at 1.
    std::string line(std::uint64_t number) const;

private:
    enum class Style { Access, Structured, Database, Plain };

    std::string body(std::uint64_t number, std::uint64_t chance) const;

    Style m_style;
    bool m_silent;
    std::uint64_t m_seed;
    std::uint64_t m_history;
};

} // namespace tidewright::demo
