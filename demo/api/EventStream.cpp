// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/EventStream.h"

#include "api/TablePrinter.h"
#include "store/ApiError.h"

namespace tidewright::demo {

namespace {

constexpr size_t ballastSize = 5 << 20;

std::string lineOf(const char *word, const std::string &object)
{
    return std::string("{\"type\":\"") + word + "\",\"object\":" + object + "}\n";
}

ObjectPtr withBallast(const StoredObject &object)
{
    return object.edited([](json &parsed) {
        parsed["metadata"]["annotations"]["demo/ballast"] = std::string(ballastSize, 'x');
    });
}

ObjectPtr neverSeen(const StoredObject &object, std::uint64_t number)
{
    return object.edited([number](json &parsed) {
        parsed["metadata"]["name"] = "never-was-" + std::to_string(number);
        parsed["metadata"]["uid"] = "00000000-0000-4000-8000-" + std::to_string(100000000000 + number);
    });
}

} // namespace

EventStream::EventStream(Form form, ObjectStore &store, Disturbance &disturbance)
    : m_form(std::move(form))
    , m_store(store)
    , m_disturbance(disturbance)
    , m_open(disturbance)
{
    followPlan();
}

void EventStream::followPlan()
{
    if (const auto plan = m_disturbance.faults(); plan != m_plan) {
        m_plan = plan;
        m_ending = plan->nextEnding();
        m_initials = m_passed = m_added = 0;
    }
}

bool EventStream::isNth(StreamFault fault, std::uint64_t number) const
{
    const auto every = m_plan->numberOf(fault);
    return every && *every > 0 && number % *every == 0;
}

std::string EventStream::eventLine(const char *word, const ObjectPtr &object)
{
    if (!m_form.asTable) {
        return lineOf(word, object->textAs(m_form.path.version));
    }
    const bool withColumns = !std::exchange(m_hasToldColumns, true);
    return lineOf(word,
        tableText(m_store, *object->type, {object}, {{"resourceVersion", std::to_string(object->version)}},
            {m_form.includeObject, withColumns}));
}

void EventStream::initial(const ObjectPtr &object)
{
    if (!isOpen()) {
        return;
    }
    const std::string line = eventLine("ADDED", object);
    if (m_ending.fault == StreamFault::CutState && m_initials == m_ending.number) {
        strike(line);
        return;
    }
    ++m_initials;
    m_bytes += line;
}

void EventStream::change(const char *word, const ObjectPtr &object)
{
    followPlan();
    if (!isOpen()) {
        return;
    }
    const bool isGiant = m_plan->numberOf(StreamFault::Giant) == m_passed;
    if (std::string_view(word) == "ADDED" && isNth(StreamFault::ModifyUnknown, ++m_added)) {
        word = "MODIFIED";
    }
    const std::string line = eventLine(word, isGiant ? withBallast(*object) : object);
    if (m_ending.fault != StreamFault::CutState && m_passed == m_ending.number) {
        strike(line);
        return;
    }
    ++m_passed;
    m_bytes += line;
    if (isNth(StreamFault::Duplicate, m_passed)) {
        m_bytes += line;
    }
    if (isNth(StreamFault::DeleteUnknown, m_passed)) {
        m_bytes += eventLine("DELETED", neverSeen(*object, m_passed));
    }
}

// In place of an event whose line would be this one.
void EventStream::strike(const std::string &line)
{
    switch (m_ending.fault) {
    case StreamFault::Error:
        fail(ApiError::ofCode(500));
        break;
    case StreamFault::Expire:
        m_store.forgetChanges();
        fail({410, "Expired", "The resourceVersion for the provided watch is too old."});
        break;
    case StreamFault::End:
        end();
        break;
    default:
        m_bytes += line.substr(0, line.size() / 2);
        m_state = State::Broken;
    }
}

void EventStream::bookmark(std::uint64_t version, bool endsInitial)
{
    followPlan();
    if (!isOpen() || (!endsInitial && m_plan->numberOf(StreamFault::NoBookmarks))) {
        return;
    }
    json metadata{{"creationTimestamp", nullptr}, {"resourceVersion", std::to_string(version)}};
    if (endsInitial) {
        metadata["annotations"] = {{"k8s.io/initial-events-end", "true"}};
    }
    auto object = std::make_shared<StoredObject>();
    object->type = m_form.path.type;
    object->version = version;
    object->body = toText({{"metadata", metadata}});
    m_bytes += eventLine("BOOKMARK", object);
}

void EventStream::fail(const ApiError &error)
{
    if (isOpen()) {
        m_bytes += lineOf("ERROR", error.statusText());
        end();
    }
}

void EventStream::end()
{
    if (isOpen()) {
        m_state = State::Ended;
    }
}

bool EventStream::handOver(httplib::DataSink &sink)
{
    followPlan();
    const auto held = m_plan->numberOf(StreamFault::Hold);
    const bool isHeld = held && isOpen() && m_bytes.size() < *held * 1024;
    if (!isHeld && !m_bytes.empty()) {
        if (!sink.write(m_bytes.data(), m_bytes.size())) {
            return false;
        }
        m_bytes.clear();
    }
    if (m_state == State::Ended) {
        sink.done();
    }
    return m_state != State::Broken && sink.is_writable();
}

} // namespace tidewright::demo
