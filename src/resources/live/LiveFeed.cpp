// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/LiveFeed.h"

#include "platform/text/Timestamp.h"
#include "platform/text/Utf8.h"
#include "resources/decoding/LineBuffer.h"

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype complaintLimit = 4096;

/// What kubectl logged before it gave up is its complaint, behind such a head; a trace may follow.
constexpr char fatal = 'F';

/// kubectl's log lines begin with a letter for the severity and the date, such as "I1123 ". 0 for other
/// lines.
char severityOf(QByteArrayView line)
{
    constexpr QByteArrayView severities("IWEF");
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const bool isLogLine = line.size() > 5 && severities.contains(line[0]) && line[5] == ' '
        && std::all_of(line.begin() + 1, line.begin() + 5, isDigit);
    return isLogLine ? line[0] : 0;
}

/// With -v=6 kubectl notes each answer: the older "GET URL 200 OK in 3 milliseconds", and today's
/// `verb="GET" url="URL" status="200 OK"`.
bool isAnswerToWatch(QByteArrayView line)
{
    return (line.contains("watch=1") || line.contains("watch=true")) && line.contains("200 OK");
}

} // namespace

/// Used on the thread that reads the child, but for its address.
struct LiveFeed::Child
{
    std::shared_ptr<LiveDecoder> decoder;
    bool isStateUntilConnected = false;
    LineBuffer errorLines;
    QByteArray complaint;
    bool isInLogText = false; // what a log line says may go on over further lines
    bool isConnected = false;
    bool hasToldState = false;
    std::vector<LiveChange> changes;

    void noteError(QByteArrayView line);
};

LiveFeed::LiveFeed(std::shared_ptr<const ResourceKind> kind, bool tellsNamespaces, std::function<void()> news)
    : m_news(std::move(news))
    , m_objects(std::move(kind), tellsNamespaces)
{
}

LiveFeed::Handlers LiveFeed::follow(std::shared_ptr<LiveDecoder> decoder, bool isStateUntilConnected)
{
    auto child = std::make_shared<Child>();
    child->decoder = std::move(decoder);
    child->isStateUntilConnected = isStateUntilConnected;
    leave();
    {
        const std::lock_guard lock(m_mutex);
        m_child = child.get();
    }
    Handlers handlers;
    handlers.piece = [feed = shared_from_this(), child](
                         const QByteArray &output, const std::optional<QByteArray> &error) {
        if (error) {
            feed->takeError(*child, *error);
        } else {
            feed->takeOutput(*child, output);
        }
    };
    handlers.ended = [feed = shared_from_this(), child](
                         const std::optional<QString> &failure) { feed->end(*child, failure); };
    return handlers;
}

LiveRun LiveFeed::leave()
{
    const std::lock_guard lock(m_mutex);
    m_child = nullptr;
    m_isConnected = false;
    m_pieces = 0;
    m_end.reset();
    return std::exchange(m_run, {});
}

void LiveFeed::update(const Child &child, const std::function<void()> &change)
{
    bool isNews = false;
    {
        const std::lock_guard lock(m_mutex);
        if (m_child != &child) {
            return;
        }
        change();
        isNews = !std::exchange(m_isAnnounced, true);
    }
    if (isNews) {
        m_news();
    }
}

void LiveFeed::takeOutput(Child &child, const QByteArray &output)
{
    child.changes.clear();
    child.decoder->take(output, child.changes);
    const double moment = currentTime();
    update(child, [&] {
        for (const LiveChange &change : child.changes) {
            switch (change.kind) {
            case LiveChange::Kind::Put:
                m_objects.put(change, moment);
                break;
            case LiveChange::Kind::Remove:
                m_objects.remove(change.key, change.uid);
                break;
            case LiveChange::Kind::Skip:
                m_objects.skip(change.key, change.line);
                break;
            }
        }
        m_run = child.decoder->run();
        if (m_run.isStateTold && !std::exchange(child.hasToldState, true)) {
            m_objects.completeState();
        }
        ++m_pieces;
        m_isConnected = m_isConnected || !m_run.resourceVersion.isEmpty();
    });
}

void LiveFeed::takeError(Child &child, const QByteArray &error)
{
    child.errorLines.take(error, [this, &child](QByteArrayView line) {
        if (!child.isConnected && isAnswerToWatch(line)) {
            connected(child);
        }
        child.noteError(line);
    });
}

void LiveFeed::Child::noteError(QByteArrayView line)
{
    if (const char severity = severityOf(line); severity == fatal) {
        complaint = line.sliced(line.indexOf("] ") + 2).toByteArray();
        isInLogText = true;
    } else if (severity != 0) {
        isInLogText = line.endsWith('{');
    } else if (isInLogText) {
        isInLogText = !line.startsWith('}');
    } else if (complaint.size() < complaintLimit) {
        complaint += line.first(std::min(line.size(), complaintLimit));
        complaint += '\n';
    }
}

void LiveFeed::connected(Child &child)
{
    child.isConnected = true;
    update(child, [&] {
        m_isConnected = true;
        if (child.isStateUntilConnected) {
            m_objects.completeState();
        }
    });
}

void LiveFeed::end(Child &child, const std::optional<QString> &failure)
{
    takeError(child, "\n"); // the last line may lack its end
    update(child, [&] {
        LiveRunEnd end;
        end.run = child.decoder->run();
        end.hasFailed = failure.has_value();
        if (failure) {
            const QString said = shownUtf8(child.complaint.trimmed());
            end.complaint.text = said.isEmpty() ? *failure : said;
        }
        m_run = end.run;
        m_end = end;
    });
}

void LiveFeed::beginState()
{
    const std::lock_guard lock(m_mutex);
    m_objects.beginState();
}

void LiveFeed::completeState()
{
    const std::lock_guard lock(m_mutex);
    m_objects.completeState();
}

void LiveFeed::repeat()
{
    const std::lock_guard lock(m_mutex);
    m_objects.repeat();
}

bool LiveFeed::hasChanges() const
{
    const std::lock_guard lock(m_mutex);
    return m_objects.hasChanges();
}

LiveFeed::News LiveFeed::fetchNews()
{
    const std::lock_guard lock(m_mutex);
    m_isAnnounced = false;
    const bool hasLost = !m_run.garbled.isEmpty() || m_run.isExpired || !m_run.serverError.isEmpty();
    const bool hasEvents = !m_run.resourceVersion.isEmpty() && !hasLost;
    return {m_isConnected, hasEvents, hasLost, m_objects.isComplete(), m_run.isUnsorted, m_pieces,
        std::exchange(m_end, std::nullopt)};
}

LiveBatch LiveFeed::takeBatch()
{
    const std::lock_guard lock(m_mutex);
    return m_objects.takeChanges();
}

} // namespace tidewright
