// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ApiCall.h"
#include "api/Disturbance.h"

#include <string>

namespace tidewright::demo {

class ApiError;

/// The events of one watch on their way to the connection: a line of JSON each, {"type":...,"object":...}.
/// Here the planned faults befall them. Used by the connection's thread alone.
class EventStream
{
public:
    /// What the lines depend on.
    struct Form
    {
        ResourcePath path;
        bool asTable = false;
        std::string includeObject; ///< for tables
    };

    EventStream(Form form, ObjectStore &store, Disturbance &disturbance);

    bool isOpen() const { return m_state == State::Open; }

    /// An ADDED event of the state with which the stream begins.
    void initial(const ObjectPtr &object);
    void change(const char *word, const ObjectPtr &object);
    /// `endsInitial`: the state is complete with this.
    void bookmark(std::uint64_t version, bool endsInitial);
    /// An ERROR event; the stream ends with it.
    void fail(const ApiError &error);
    void end();

    /// Sends what is there. False when the connection is to be broken off, or is gone.
    bool handOver(httplib::DataSink &sink);

private:
    enum class State { Open, Ended, Broken };

    void followPlan();
    void strike(const std::string &line);
    std::string eventLine(const char *word, const ObjectPtr &object);
    bool isNth(StreamFault fault, std::uint64_t number) const;

    const Form m_form;
    ObjectStore &m_store;
    Disturbance &m_disturbance;
    const Disturbance::OpenWatch m_open;
    std::shared_ptr<FaultPlan> m_plan;
    FaultPlan::Ending m_ending;
    /// Counted from when the plan took hold.
    std::uint64_t m_initials = 0;
    std::uint64_t m_passed = 0;
    std::uint64_t m_added = 0;
    bool m_hasToldColumns = false;
    State m_state = State::Open;
    std::string m_bytes;
};

} // namespace tidewright::demo
