// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/decoding/LineBuffer.h"
#include "resources/decoding/LiveRun.h"
#include "resources/kinds/ResourceKind.h"

#include <optional>

namespace tidewright {

/// The output arguments with which `kubectl get --watch --output-watch-events` prints a kind's own template,
/// for `TemplateDecoder`; nothing when the kind has no Go template. With --watch kubectl runs its output
/// through a column writer, which turns tabs into blanks: here the unit separator (0x1F) stands for them.
std::optional<QStringList> watchOutputArguments(const ResourceKind &kind);

/// Reads what kubectl prints with these arguments: per line the event's type, the object's namespace, name
/// and identity, and then its fields. First comes the whole state, as additions.
class TemplateDecoder : public LiveDecoder
{
public:
    void take(QByteArrayView bytes, std::vector<LiveChange> &changes) override;

private:
    LineBuffer m_buffer;
};

} // namespace tidewright
