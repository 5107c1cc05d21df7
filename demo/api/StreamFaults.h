// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tidewright::demo {

/// What can befall a watch on purpose; `faultUsage` says what each does.
enum class StreamFault {
    Cut,
    CutState,
    End,
    Error,
    Expire,
    Pass,
    Refuse,
    Hold,
    NoBookmarks,
    Duplicate,
    ModifyUnknown,
    DeleteUnknown,
    Giant,
    IgnoreInitial,
    RefuseInitial,
    Shuffle,
};

/// The faults that are planned for watches, as "KIND[:N],KIND[:N]...". All goes by counts, nothing by the
/// clock, so that the same requests break in the same way. Any thread.
class FaultPlan
{
public:
    static constexpr std::uint64_t never = UINT64_MAX;

    struct Ending
    {
        StreamFault fault = StreamFault::Pass;
        std::uint64_t number = never; ///< of events that come through before
    };

    /// Throws ApiError 400 when the text names no faults.
    explicit FaultPlan(const std::string &text);

    const std::string &text() const { return m_text; }
    /// The fault's N, or what stands in for it; nothing when it is not planned.
    std::optional<std::uint64_t> numberOf(StreamFault fault) const;

    /// How the next stream ends: the planned ways take turns.
    Ending nextEnding();
    /// Whether one more watch is refused.
    bool refusesNext();

private:
    std::string m_text;
    std::map<StreamFault, std::uint64_t> m_numbers;
    std::vector<Ending> m_endings;
    std::atomic<size_t> m_turn{0};
    std::atomic<std::uint64_t> m_asked{0};
};

/// A line of help for each fault.
std::string faultUsage();

} // namespace tidewright::demo
