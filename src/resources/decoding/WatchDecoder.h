// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/decoding/LineBuffer.h"
#include "resources/decoding/ObjectLines.h"

namespace tidewright {

/// Reads the events of a watch: a JSON object on each line, with "type" and "object". A line without an end
/// counts as not sent. A state that the watch begins with ends with a bookmark that is annotated
/// "k8s.io/initial-events-end".
class WatchDecoder : public LiveDecoder
{
public:
    explicit WatchDecoder(std::shared_ptr<const ObjectLines> lines);
    ~WatchDecoder() override;

    void take(QByteArrayView bytes, std::vector<LiveChange> &changes) override;

private:
    struct Parser;

    void takeLine(QByteArrayView line, std::vector<LiveChange> &changes);
    void noteOrder(const QByteArray &key);

    const std::shared_ptr<const ObjectLines> m_lines;
    const std::unique_ptr<Parser> m_parser;
    LineBuffer m_buffer;
    QByteArray m_lastKey;
    qint64 m_outOfOrder = 0;
};

} // namespace tidewright
