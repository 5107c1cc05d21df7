// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/printing/ObjectPrinter.h"

#include <optional>
#include <string>
#include <vector>

namespace tidewright {

/// A JSONPath template as kubectl understands it. Paths are followed leniently, as kubectl does by itself:
/// what is not there prints nothing.
class JsonPathPrinter : public ObjectPrinter
{
public:
    /// `text` stands between "{range .items[*]}" and its end. Null with a problem for what is not known.
    static std::shared_ptr<const ObjectPrinter> compile(QByteArrayView text, QString &problem);

    QString print(const simdjson::dom::element &object, QByteArray &line) const override;

    /// One step from a set of values to the next one.
    struct Step
    {
        enum class Kind { Field, Slice, Wildcard } kind = Kind::Field;
        std::string name; ///< of a field
        std::optional<qint64> begin = {}; ///< of a slice; from the end when negative
        std::optional<qint64> end = {};
    };

private:
    struct Piece
    {
        QByteArray text; ///< printed as it stands, before the values at the path
        std::vector<Step> path; ///< empty for the text at the end
    };

    std::vector<Piece> m_pieces;
};

} // namespace tidewright
