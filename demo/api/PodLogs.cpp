// SPDX-License-Identifier: GPL-3.0-or-later
#include "api/PodLogs.h"

#include "base/Time.h"
#include "logs/LogVoice.h"
#include "store/ApiError.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>

namespace tidewright::demo {

namespace {

using Clock = std::chrono::steady_clock;

// Not a text type: those the HTTP library would compress, which holds lines back.
constexpr const char *contentType = "application/octet-stream";

// What is generated and written in one go, so that a long history does not have to fit into memory.
constexpr size_t pieceSize = 64 * 1024;

struct LogStream
{
    ObjectStore &store;
    const Disturbance &disturbance;
    LogPace::Share share;
    ObjectPtr pod;
    LogVoice voice;
    std::uint64_t next = 1;
    std::uint64_t end = 0; // first number that is not history
    std::uint64_t bytesLeft = UINT64_MAX;
    bool follows = false;
    bool timestamps = false;
    Seconds age = 0; // of the last line of history
    double due = 0;
    Clock::time_point last = Clock::now();
};

std::string containerNames(const json &pod)
{
    std::string names;
    for (const json &container : at(pod, "/spec/containers")) {
        names += (names.empty() ? "" : " ") + textAt(container, "/name");
    }
    return names;
}

std::string chosenContainer(const json &pod, const std::string &wanted)
{
    const json &containers = at(pod, "/spec/containers");
    const std::string name = textAt(pod, "/metadata/name");
    if (wanted.empty() && containers.size() == 1) {
        return textAt(containers, "/0/name");
    }
    if (wanted.empty()) {
        throw ApiError::badRequest("a container name must be specified for pod " + name + ", choose one of: ["
            + containerNames(pod) + ']');
    }
    for (const char *list : {"/spec/containers", "/spec/initContainers"}) {
        for (const json &container : at(pod, list)) {
            if (textAt(container, "/name") == wanted) {
                return wanted;
            }
        }
    }
    throw ApiError::badRequest("container " + wanted + " is not valid for pod " + name);
}

json statusOf(const json &pod, const std::string &container)
{
    for (const json &status : at(pod, "/status/containerStatuses")) {
        if (textAt(status, "/name") == container) {
            return status;
        }
    }
    return nullptr;
}

// A container that never started has no log.
void requireStarted(const json &pod, const json &status, const std::string &container, bool previous)
{
    const std::string name = textAt(pod, "/metadata/name");
    if (previous && numberAt(status, "/restartCount") == 0) {
        throw ApiError::badRequest(
            "previous terminated container \"" + container + "\" in pod \"" + name + "\" not found");
    }
    const std::string reason = textAt(status, "/state/waiting/reason");
    if (!previous && (status.is_null() || (!reason.empty() && reason != "CrashLoopBackOff"))) {
        throw ApiError::badRequest("container \"" + container + "\" in pod \"" + name
            + "\" is waiting to start: " + (reason.empty() ? "ContainerCreating" : reason));
    }
}

std::uint64_t numberParameter(const ApiCall &call, const std::string &name, std::uint64_t missing)
{
    const std::string text = call.parameter(name);
    if (text.empty()) {
        return missing;
    }
    if (text.find_first_not_of("0123456789") != text.npos || text.size() > 18) {
        throw ApiError::badRequest(name + " must be a number that is not negative, not \"" + text + "\"");
    }
    return std::stoull(text);
}

std::string stampedLine(const LogStream &stream, std::uint64_t number)
{
    const std::string line = stream.voice.line(number);
    if (!stream.timestamps) {
        return line;
    }
    const Seconds past = stream.age + (number < stream.end ? Seconds(stream.end - number) : 0);
    std::string stamp = timestamp(now() - past);
    stamp.pop_back();
    return stamp + ".000000000Z " + line;
}

bool writeLines(LogStream &stream, httplib::DataSink &sink, std::uint64_t until)
{
    std::string piece;
    const std::uint64_t first = stream.next;
    while (stream.next < until && piece.size() < pieceSize) {
        piece += stampedLine(stream, stream.next++);
    }
    if (piece.size() > stream.bytesLeft) {
        piece.resize(stream.bytesLeft);
    }
    stream.bytesLeft -= piece.size();
    if (!piece.empty() && !sink.write(piece.data(), piece.size())) {
        return false;
    }
    stream.share.countLines(stream.next - first);
    return true;
}

// How long ago the first line wanted was written; nothing when all are.
std::optional<Seconds> wantedAge(const ApiCall &call)
{
    if (const std::string since = call.parameter("sinceTime"); !since.empty()) {
        return now() - parseTimestamp(since);
    }
    const std::uint64_t seconds = numberParameter(call, "sinceSeconds", 0);
    return seconds > 0 ? std::optional(Seconds(seconds)) : std::nullopt;
}

// History has a line for each second.
std::uint64_t linesOfHistory(const ApiCall &call, const LogStream &stream)
{
    const std::uint64_t all = stream.voice.history();
    const std::uint64_t tail = std::min(all, numberParameter(call, "tailLines", all));
    const std::optional<Seconds> age = wantedAge(call);
    return age ? std::min(tail, std::uint64_t(std::max<Seconds>(0, *age - stream.age))) : tail;
}

bool podIsThere(const LogStream &stream)
{
    const ObjectPtr present = stream.store.get(*stream.pod->type, stream.pod->ns, stream.pod->name);
    return present && present->uid == stream.pod->uid;
}

// Waits until lines are due and says how many. Never longer than half a second, so that a client that left is
// noticed.
std::uint64_t waitForLines(LogStream &stream)
{
    const bool isStill = stream.voice.isSilent() || stream.disturbance.logsPaused();
    const double rate = isStill ? 0 : stream.share.rate(stream.disturbance.logRate());
    const double untilNext = rate > 0 ? (1 - stream.due) / rate : 0.5;
    std::this_thread::sleep_for(std::chrono::duration<double>(std::clamp(untilNext, 0.02, 0.5)));
    const Clock::time_point present = Clock::now();
    stream.due += rate * std::chrono::duration<double>(present - stream.last).count();
    stream.last = present;
    const auto lines = std::uint64_t(stream.due);
    stream.due -= double(lines);
    return lines;
}

bool continueStream(LogStream &stream, httplib::DataSink &sink)
{
    if (stream.next < stream.end) {
        stream.last = Clock::now();
        if (!writeLines(stream, sink, stream.end)) {
            return false;
        }
    } else if (stream.follows && podIsThere(stream)) {
        const std::uint64_t until = stream.next + waitForLines(stream);
        while (stream.next < until && stream.bytesLeft > 0) {
            if (!writeLines(stream, sink, until)) {
                return false;
            }
        }
        stream.end = stream.next;
        if (!sink.is_writable()) {
            return false;
        }
    } else {
        sink.done();
    }
    if (stream.bytesLeft == 0) {
        sink.done();
    }
    return true;
}

} // namespace

void readLogs(const ApiCall &call, LogPace &pace, const Disturbance &disturbance)
{
    const ObjectPtr object = requireObject(call);
    const json pod = object->parsed();
    const std::string container = chosenContainer(pod, call.parameter("container"));
    const json status = statusOf(pod, container);
    const bool previous = call.flag("previous");
    requireStarted(pod, status, container, previous);

    const auto stream = std::shared_ptr<LogStream>(new LogStream{
        call.cluster.store, disturbance, LogPace::Share(pace), object, LogVoice(pod, container)});
    stream->end = stream->voice.history() + 1;
    if (const std::string start = textAt(status, "/state/running/startedAt"); previous && !start.empty()) {
        stream->age = std::max<Seconds>(0, now() - parseTimestamp(start)); // it ended before this one started
    }
    stream->next = stream->end - linesOfHistory(call, *stream);
    stream->bytesLeft = numberParameter(call, "limitBytes", UINT64_MAX);
    stream->timestamps = call.flag("timestamps");
    stream->follows = call.flag("follow") && !previous && at(status, "/state/running").is_object();
    call.response.status = 200;
    call.response.set_chunked_content_provider(
        contentType, [stream](size_t, httplib::DataSink &sink) { return continueStream(*stream, sink); });
}

} // namespace tidewright::demo
