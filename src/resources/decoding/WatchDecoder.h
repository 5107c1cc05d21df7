// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/decoding/LineBuffer.h"
#include "resources/decoding/ObjectLines.h"

namespace tidewright {

/// Reads the events of a watch: a JSON object on each line, with "type" and "object". A line without an end
/// counts as not sent.
class WatchDecoder : public LiveDecoder
{
public:
    explicit WatchDecoder(std::shared_ptr<const ObjectLines> lines);
    ~WatchDecoder() override;

    void take(QByteArrayView bytes, std::vector<LiveChange> &changes) override;

private:
    struct Parser;

    void takeLine(QByteArrayView line, std::vector<LiveChange> &changes);

    const std::shared_ptr<const ObjectLines> m_lines;
    const std::unique_ptr<Parser> m_parser;
    LineBuffer m_buffer;
};

} // namespace tidewright
