// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/printing/ObjectPrinter.h"

#include <string>
#include <vector>

namespace tidewright {

/// A Go template as kubectl understands it: what is not there prints "<no value>", a field of what is no map
/// fails.
class GoTemplatePrinter : public ObjectPrinter
{
public:
    /// `text` stands between "{{range .items}}" and its end. Null with a problem for what is not known.
    static std::shared_ptr<const ObjectPrinter> compile(QByteArrayView text, QString &problem);

    QString print(const simdjson::dom::element &object, QByteArray &line) const override;

    struct Node
    {
        enum class Kind { Text, Value, Length, If, Range } kind = Kind::Text;
        QByteArray text = {};
        std::vector<std::string> path = {}; ///< from the dot
        std::vector<Node> body = {}; ///< of an if or a range
    };

private:
    std::vector<Node> m_nodes;
};

} // namespace tidewright
