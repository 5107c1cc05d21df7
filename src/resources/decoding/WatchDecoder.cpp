// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/decoding/WatchDecoder.h"

#include <simdjson.h>

#include <cstdint>
#include <string_view>
#include <utility>

namespace tidewright {

namespace {

constexpr qsizetype longestLine = qsizetype(256) << 20;
constexpr std::int64_t gone = 410;
constexpr qint64 strays = 10;

QByteArray pointedText(const simdjson::dom::element &object, std::string_view pointer)
{
    std::string_view text;
    return object.at_pointer(pointer).get(text) == simdjson::SUCCESS
        ? QByteArray(text.data(), static_cast<qsizetype>(text.size()))
        : QByteArray();
}

} // namespace

struct WatchDecoder::Parser
{
    simdjson::dom::parser json;
};

WatchDecoder::WatchDecoder(std::shared_ptr<const ObjectLines> lines)
    : m_lines(std::move(lines))
    , m_parser(std::make_unique<Parser>())
{
}

WatchDecoder::~WatchDecoder() = default;

void WatchDecoder::take(QByteArrayView bytes, std::vector<LiveChange> &changes)
{
    m_buffer.take(bytes, [this, &changes](QByteArrayView line) {
        // Behind a line that could not be read, or an error, nothing can be trusted to be complete.
        if (m_run.garbled.isEmpty() && !m_run.isExpired && m_run.serverError.isEmpty()) {
            takeLine(line, changes);
        }
    });
    if (m_buffer.size() > longestLine) {
        m_run.garbled = QStringLiteral("An event of the server has no end.");
        m_buffer = {};
    }
}

void WatchDecoder::takeLine(QByteArrayView line, std::vector<LiveChange> &changes)
{
    if (line.trimmed().isEmpty()) {
        return;
    }
    simdjson::dom::element event;
    simdjson::dom::element object;
    const auto error
        = m_parser->json.parse(line.data(), static_cast<std::size_t>(line.size()), false).get(event);
    const QByteArray type = error == simdjson::SUCCESS ? pointedText(event, "/type") : QByteArray();
    if (type.isEmpty() || event.at_key("object").get(object) != simdjson::SUCCESS) {
        m_run.garbled = QStringLiteral("What the server sent is no event of a watch.");
        return;
    }
    if (type == "ERROR") {
        std::int64_t code = 0;
        m_run.isExpired = object.at_key("code").get(code) == simdjson::SUCCESS && code == gone;
        if (!m_run.isExpired) {
            const QByteArray message = pointedText(object, "/message");
            m_run.serverError = message.isEmpty() ? QStringLiteral("The server reported an error.")
                                                  : QString::fromUtf8(message);
        }
        return;
    }
    if (type == "ADDED" || type == "MODIFIED") {
        changes.push_back(m_lines->change(object));
        noteOrder(changes.back().key);
    } else if (type == "DELETED") {
        changes.push_back(ObjectLines::removal(object));
    }
    m_run.isStateTold = m_run.isStateTold
        || (type == "BOOKMARK"
            && pointedText(object, "/metadata/annotations/k8s.io~1initial-events-end") == "true");
    if (const QByteArray version = pointedText(object, "/metadata/resourceVersion"); !version.isEmpty()) {
        m_run.resourceVersion = version;
    }
}

/// Of a state. Some objects may change, or come, while it is told.
void WatchDecoder::noteOrder(const QByteArray &key)
{
    if (!m_run.isStateTold) {
        ++m_run.objects;
        m_outOfOrder += key < m_lastKey ? 1 : 0;
        m_lastKey = key;
        m_run.isUnsorted = m_outOfOrder > strays + m_run.objects / 20;
    }
}

} // namespace tidewright
