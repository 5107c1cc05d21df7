// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/StreamFaults.h"

#include "store/ApiError.h"

#include <charconv>
#include <sstream>

namespace tidewright::demo {

namespace {

struct FaultWord
{
    const char *word;
    StreamFault fault;
    bool endsStream;
    std::uint64_t usual; // N where none is given; never: it takes none
    const char *help;
};

const std::vector<FaultWord> &faultWords()
{
    static const std::vector<FaultWord> table{
        {"cut", StreamFault::Cut, true, 5, "after N events the connection breaks in the middle of a line"},
        {"cut-state", StreamFault::CutState, true, 5, "the same among the events that tell the first state"},
        {"end", StreamFault::End, true, 5, "after N events the stream ends early, cleanly"},
        {"error", StreamFault::Error, true, 5, "after N events an ERROR event (500), then the end"},
        {"expire", StreamFault::Expire, true, 5,
            "after N events an ERROR event (410), and no earlier version is known any more"},
        {"pass", StreamFault::Pass, true, FaultPlan::never, "none of the above: one stream is left alone"},
        {"refuse", StreamFault::Refuse, false, 0, "after N watches every further one is forbidden (403)"},
        {"hold", StreamFault::Hold, false, 64,
            "a proxy buffers: bytes come in pieces of N KiB, and at the end of the stream"},
        {"no-bookmarks", StreamFault::NoBookmarks, false, FaultPlan::never,
            "bookmarks are asked for and never come"},
        {"duplicate", StreamFault::Duplicate, false, 5, "every Nth event comes twice"},
        {"modify-unknown", StreamFault::ModifyUnknown, false, 5,
            "every Nth ADDED event says MODIFIED, of an object that was never told of"},
        {"delete-unknown", StreamFault::DeleteUnknown, false, 5,
            "behind every Nth event an object is deleted that never was"},
        {"giant", StreamFault::Giant, false, 5, "after N events an object of 5 MB"},
        {"ignore-initial", StreamFault::IgnoreInitial, false, FaultPlan::never,
            "sendInitialEvents is not known, and not refused either"},
        {"refuse-initial", StreamFault::RefuseInitial, false, FaultPlan::never,
            "resourceVersionMatch on a watch is refused (422), as by Kubernetes 1.20"},
        {"shuffle", StreamFault::Shuffle, false, FaultPlan::never, "the first state is told in no order"},
    };
    return table;
}

const FaultWord &wordOf(const std::string &name)
{
    for (const FaultWord &word : faultWords()) {
        if (name == word.word) {
            return word;
        }
    }
    throw ApiError::badRequest("there is no disturbance \"" + name + "\"");
}

std::uint64_t numberIn(const std::string &text, const std::string &entry)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number > 1000000000) {
        throw ApiError::badRequest("\"" + entry + "\" needs a number from 0 to 1000000000 after the colon");
    }
    return number;
}

} // namespace

FaultPlan::FaultPlan(const std::string &text)
    : m_text(text)
{
    std::istringstream entries(text);
    for (std::string entry; std::getline(entries, entry, ',');) {
        const size_t colon = entry.find(':');
        const FaultWord &word = wordOf(entry.substr(0, colon));
        if (colon != entry.npos && word.usual == never) {
            throw ApiError::badRequest(std::string(word.word) + " takes no number");
        }
        const std::uint64_t number
            = colon == entry.npos ? word.usual : numberIn(entry.substr(colon + 1), entry);
        if (word.endsStream) {
            m_endings.push_back({word.fault, number});
        } else {
            m_numbers[word.fault] = number;
        }
    }
}

std::optional<std::uint64_t> FaultPlan::numberOf(StreamFault fault) const
{
    const auto found = m_numbers.find(fault);
    return found == m_numbers.end() ? std::nullopt : std::optional(found->second);
}

FaultPlan::Ending FaultPlan::nextEnding()
{
    return m_endings.empty() ? Ending{} : m_endings[m_turn++ % m_endings.size()];
}

bool FaultPlan::refusesNext()
{
    const auto served = numberOf(StreamFault::Refuse);
    return served && m_asked++ >= *served;
}

std::string faultUsage()
{
    std::string text;
    for (const FaultWord &word : faultWords()) {
        const bool counts = word.usual != FaultPlan::never;
        std::string name = word.word;
        name += counts ? ":N" : "";
        name.resize(18, ' ');
        text += "    " + name + word.help + (counts ? " (" + std::to_string(word.usual) + ")" : "") + '\n';
    }
    return text;
}

} // namespace tidewright::demo
