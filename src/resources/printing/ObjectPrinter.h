// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

namespace simdjson::dom {
class element;
}

namespace tidewright {

/// Prints one object as kubectl would with the output arguments of a listing (ResourceKind::outputArguments):
/// the very bytes of the object's line. Immutable; any thread.
class ObjectPrinter
{
public:
    virtual ~ObjectPrinter() = default;

    /// Appends the object's line, without its line end, to `line`. Nothing when that was done; otherwise why
    /// kubectl would have failed on this object, and what was appended means nothing.
    virtual QString print(const simdjson::dom::element &object, QByteArray &line) const = 0;

    /// Null, with `problem` set to a sentence, for output arguments that are no template of a list's items,
    /// or use more of its language than is known here. Known of JSONPath: texts, fields, [N], [A:B], [*] and
    /// .* within one range over the items; of Go templates: texts, fields, "len", if and range.
    static std::shared_ptr<const ObjectPrinter> compile(const QStringList &outputArguments, QString &problem);

protected:
    ObjectPrinter() = default;
    ObjectPrinter(const ObjectPrinter &) = default;
    ObjectPrinter &operator=(const ObjectPrinter &) = default;
};

} // namespace tidewright
