// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

namespace simdjson::dom {
class element;
}

namespace tidewright {

// How the Go programs print the values of a JSON document: what kubectl's templates are made of. JSON numbers
// without fraction that fit 64 bits are integers there, all others are doubles. Any thread.

/// As `fmt.Print` has it: 7, 1.5e+06, true, <nil>, map[a:1 b:2] with sorted keys, [1 2]. Texts stand as they
/// are.
void appendGoText(const simdjson::dom::element &value, QByteArray &out);

/// As `json.Marshal` has it: no blanks, sorted keys; control characters, "<", ">" and "&" escaped.
void appendGoJson(const simdjson::dom::element &value, QByteArray &out);

/// As `appendGoText`, of a document that was written as JSON by `appendGoJson` and read again before, which
/// turns doubles without fraction into integers.
void appendReadAgainGoText(const simdjson::dom::element &value, QByteArray &out);

} // namespace tidewright
