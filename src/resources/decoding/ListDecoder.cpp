// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/decoding/ListDecoder.h"

#include <simdjson.h>

#include <string_view>
#include <utility>

namespace tidewright {

struct ListDecoder::Parser
{
    simdjson::dom::parser json;
};

ListDecoder::ListDecoder(std::shared_ptr<const ObjectLines> lines)
    : m_lines(std::move(lines))
    , m_parser(std::make_unique<Parser>())
    , m_splitter([this](QByteArrayView item) { takeItem(item); })
{
}

ListDecoder::~ListDecoder() = default;

void ListDecoder::take(QByteArrayView bytes, std::vector<LiveChange> &changes)
{
    m_changes = &changes;
    m_splitter.take(bytes);
    m_changes = nullptr;
    if (m_splitter.isComplete() && !m_run.isWholeList) {
        takeEnvelope();
    }
}

void ListDecoder::takeItem(QByteArrayView item)
{
    ++m_run.objects;
    m_run.bytes += item.size();
    simdjson::dom::element object;
    const auto error
        = m_parser->json.parse(item.data(), static_cast<std::size_t>(item.size()), false).get(object);
    if (error == simdjson::SUCCESS) {
        m_changes->push_back(m_lines->change(object));
    } else {
        m_run.garbled = QStringLiteral("An object is no JSON (%1).")
                            .arg(QString::fromLatin1(simdjson::error_message(error)));
    }
}

void ListDecoder::takeEnvelope()
{
    const QByteArray &envelope = m_splitter.envelope();
    const auto textAt = [](const simdjson::dom::element &metadata, std::string_view name) {
        std::string_view text;
        return metadata.at_key(name).get(text) == simdjson::SUCCESS
            ? QByteArray(text.data(), static_cast<qsizetype>(text.size()))
            : QByteArray();
    };
    simdjson::dom::element list;
    simdjson::dom::element metadata;
    if (m_parser->json.parse(envelope.constData(), static_cast<std::size_t>(envelope.size())).get(list)
            == simdjson::SUCCESS
        && list.at_key("metadata").get(metadata) == simdjson::SUCCESS) {
        m_run.resourceVersion = textAt(metadata, "resourceVersion");
        m_run.continueToken = textAt(metadata, "continue");
    }
    m_run.isWholeList = !m_run.resourceVersion.isEmpty();
    if (!m_run.isWholeList) {
        m_run.garbled = QStringLiteral("What the server sent is no list of objects.");
    }
}

} // namespace tidewright
