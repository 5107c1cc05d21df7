// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/Watch.h"

#include "api/EventStream.h"
#include "api/Reads.h"
#include "store/ApiError.h"

#include <algorithm>
#include <memory>

namespace tidewright::demo {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

// How long a departed client may go unnoticed.
constexpr Milliseconds pollInterval{500};
// Of the state, at one go; a client sees the first objects of many thousands at once.
constexpr size_t initialPiece = 200;
constexpr std::chrono::seconds usualDuration{2400};
constexpr std::chrono::seconds beforeEnd{2};

/// What a watch was asked to be.
struct WatchQuery
{
    ListQuery scope;
    std::uint64_t version = 0;
    bool beginsWithState = false;
    bool tellsEndOfState = false;
    bool hasBookmarks = false;
    std::chrono::seconds duration = usualDuration;
};

/// One watch between the store and its event stream. Used by its connection's thread alone.
class Watch
{
public:
    Watch(const ApiCall &call, WatchQuery query, Disturbance &disturbance, Milliseconds bookmarkInterval)
        : m_store(call.cluster.store)
        , m_type(call.type())
        , m_query(std::move(query))
        , m_bookmarkInterval(bookmarkInterval)
        , m_end(Clock::now() + m_query.duration)
        , m_nextBookmark(nextBookmark(Clock::now()))
        , m_version(m_query.version)
        , m_events({call.path, wantsTable(call), call.parameter("includeObject")}, m_store, disturbance)
    {
        if (m_query.beginsWithState) {
            ListPage state = m_store.list(m_type, m_query.scope);
            m_state = std::move(state.objects);
            if (disturbance.faults()->numberOf(StreamFault::Shuffle)) {
                std::sort(m_state.begin(), m_state.end(),
                    [](const ObjectPtr &a, const ObjectPtr &b) { return a->uid < b->uid; });
            }
            m_version = state.version;
        } else if (m_version == 0) {
            m_version = m_store.version();
        }
    }

    /// Goes on a little; false when the connection is done for.
    bool proceed(httplib::DataSink &sink)
    {
        if (m_query.beginsWithState) {
            sendState();
        } else {
            sendChanges();
        }
        return m_events.handOver(sink);
    }

private:
    void sendState()
    {
        const size_t until = std::min(m_sent + initialPiece, m_state.size());
        for (; m_sent < until; ++m_sent) {
            m_events.initial(m_state[m_sent]);
        }
        if (m_sent == m_state.size()) {
            m_query.beginsWithState = false;
            m_state.clear();
            if (m_query.tellsEndOfState) {
                m_events.bookmark(m_version, true);
            }
        }
    }

    void sendChanges()
    {
        const auto changes = m_store.changesAfter(m_version, m_type, untilNextTask());
        if (!changes) {
            m_events.fail({410, "Expired",
                "too old resource version: " + std::to_string(m_version) + " ("
                    + std::to_string(m_store.oldestVersion(m_type)) + ')'});
            return;
        }
        for (const Change &change : changes->list) {
            tell(change);
        }
        m_version = changes->version;
        const Clock::time_point present = Clock::now();
        if (m_query.hasBookmarks && present >= m_nextBookmark) {
            m_events.bookmark(m_version, false);
            m_nextBookmark = nextBookmark(present);
        }
        if (present >= m_end) {
            m_events.end();
        }
    }

    // One more stands shortly before the end, so that the next watch can begin there.
    Clock::time_point nextBookmark(Clock::time_point present) const
    {
        const Clock::time_point last = m_end - beforeEnd;
        const Clock::time_point next = present + m_bookmarkInterval;
        return present < last ? std::min(next, last) : next;
    }

    Milliseconds untilNextTask() const
    {
        const auto next = m_query.hasBookmarks ? std::min(m_end, m_nextBookmark) : m_end;
        const auto left = std::chrono::ceil<Milliseconds>(next - Clock::now());
        return std::clamp(left, Milliseconds(0), pollInterval);
    }

    bool isWatched(const ObjectPtr &object) const
    {
        const ListQuery &scope = m_query.scope;
        return object && (scope.ns.empty() || object->ns == scope.ns)
            && (!scope.filter || scope.filter(*object));
    }

    // What a change is to this watch: an object may come to match its selector, or cease to.
    void tell(const Change &change)
    {
        const bool was = isWatched(change.before);
        if (change.kind != Change::Kind::Deleted && isWatched(change.object)) {
            m_events.change(was ? "MODIFIED" : "ADDED", change.object);
        } else if (was) {
            m_events.change("DELETED",
                change.kind == Change::Kind::Deleted ? change.object
                                                     : change.before->edited([&change](json &object) {
                                                           object["metadata"]["resourceVersion"]
                                                               = std::to_string(change.object->version);
                                                       }));
        }
    }

    ObjectStore &m_store;
    const ResourceType &m_type;
    WatchQuery m_query;
    const Milliseconds m_bookmarkInterval;
    const Clock::time_point m_end;
    Clock::time_point m_nextBookmark;
    std::uint64_t m_version;
    std::vector<ObjectPtr> m_state;
    size_t m_sent = 0;
    EventStream m_events;
};

void requireMatch(const ApiCall &call, const FaultPlan &plan)
{
    const std::string match = call.parameter("resourceVersionMatch");
    const bool sendsInitial = call.request.has_param("sendInitialEvents");
    if (!match.empty() && plan.numberOf(StreamFault::RefuseInitial)) {
        throw ApiError::invalidOption("resourceVersionMatch", "resourceVersionMatch is forbidden for watch");
    }
    if (sendsInitial && match != "NotOlderThan") {
        throw ApiError::invalidOption("resourceVersionMatch",
            "sendInitialEvents requires setting resourceVersionMatch to NotOlderThan");
    }
    if (!sendsInitial && !match.empty()) {
        throw ApiError::invalidOption("resourceVersionMatch",
            "resourceVersionMatch is forbidden for watch unless sendInitialEvents is provided");
    }
}

WatchQuery queryOf(const ApiCall &call, const FaultPlan &plan)
{
    WatchQuery query{{call.path.ns, filterOf(call)}};
    query.version = versionParameter(call);
    query.hasBookmarks = call.flag("allowWatchBookmarks");
    query.beginsWithState = query.version == 0;
    if (const std::uint64_t seconds = numberParameter(call, "timeoutSeconds"); seconds > 0) {
        query.duration = std::chrono::seconds(std::min<std::uint64_t>(seconds, 86400));
    }
    if (!plan.numberOf(StreamFault::IgnoreInitial)) {
        requireMatch(call, plan);
        if (call.request.has_param("sendInitialEvents")) {
            query.beginsWithState = call.flag("sendInitialEvents");
            query.tellsEndOfState = query.beginsWithState && query.hasBookmarks;
        }
    }
    return query;
}

} // namespace

void watchList(const ApiCall &call, Disturbance &disturbance, Milliseconds bookmarkInterval)
{
    const auto plan = disturbance.faults();
    if (plan->refusesNext()) {
        throw ApiError::forbidden(call.type(), "watch", call.path.ns);
    }
    const auto watch = std::make_shared<Watch>(call, queryOf(call, *plan), disturbance, bookmarkInterval);
    call.response.status = 200;
    call.response.set_chunked_content_provider("application/json;stream=watch",
        [watch](size_t, httplib::DataSink &sink) { return watch->proceed(sink); });
}

} // namespace tidewright::demo
