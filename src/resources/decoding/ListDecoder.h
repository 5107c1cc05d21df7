// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/decoding/ListItemSplitter.h"
#include "resources/decoding/ObjectLines.h"

namespace tidewright {

/// Reads one page of a list of objects (a JSON object with "items", and "resourceVersion" and "continue" in
/// its "metadata").
class ListDecoder : public LiveDecoder
{
public:
    explicit ListDecoder(std::shared_ptr<const ObjectLines> lines);
    ~ListDecoder() override;

    void take(QByteArrayView bytes, std::vector<LiveChange> &changes) override;

private:
    struct Parser;

    void takeItem(QByteArrayView item);
    void takeEnvelope();

    const std::shared_ptr<const ObjectLines> m_lines;
    const std::unique_ptr<Parser> m_parser;
    ListItemSplitter m_splitter;
    std::vector<LiveChange> *m_changes = nullptr; // during take
};

} // namespace tidewright
