// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/decoding/LiveRun.h"
#include "resources/kinds/ResourceKind.h"
#include "resources/printing/ObjectPrinter.h"

namespace tidewright {

/// Where the field stands that the listing of a kind is sorted by: a JSON pointer (RFC 6901). Empty where it
/// comes as the server has it.
QByteArray sortedBy(const ResourceKind &kind);

/// From an object to its line (KubeTableItem::line), with the kind's second template where the first one
/// fails. Immutable; any thread.
class ObjectLines
{
public:
    /// `problem` is set when the kind's template is not known here; nothing else may be called then.
    ObjectLines(const ResourceKind &kind, QString &problem);

    LiveChange change(const simdjson::dom::element &object) const;
    /// Its namespace and name, and its identity.
    static LiveChange removal(const simdjson::dom::element &object);

private:
    std::shared_ptr<const ObjectPrinter> m_printer;
    std::shared_ptr<const ObjectPrinter> m_live; ///< null: nothing more than the listing
    std::function<QStringList(const QString &error)> m_otherOutput;
    QByteArray m_sortedBy;
    std::optional<std::size_t> m_freeTextField;
    std::size_t m_fieldCount;
};

} // namespace tidewright
