// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QString>

namespace tidewright {

/// What kubectl's Go templates print in place of a value that is not there.
inline constexpr QLatin1String missingValue("<no value>");

/// The whole field as a base-10 integer with an optional sign; 0 when it is anything else or beyond 64 bits.
/// Any thread.
qint64 integerOf(QByteArrayView field);

/// The field as text. Any thread.
QString textOf(QByteArrayView field);

/// The field as text; empty for the placeholder. Any thread.
QString presentTextOf(QByteArrayView field);

/// A map as Go prints it, "map[app:web tier:db]", in the form of a label selector: "app=web, tier=db". Its
/// keys and values must be without blanks, as those of labels are. Any thread.
QString labelsTextOf(QByteArrayView field);

/// The pieces of `text` between separators, empty ones dropped, with `glue` between them. Any thread.
QString joinedPieces(const QString &text, QChar separator, QLatin1String glue);

/// A text for display: the placeholders in a list of pieces such as "<no value>/<no value>" or
/// "<no value>:9000/TCP" are taken out, and with them what they leave empty. Any thread.
QString withoutMissingValues(const QString &text);

/// A Kubernetes quantity such as "20Gi", "1500m" or "2e3" as a number; -1 when it is none. Any thread.
double quantityOf(const QString &text);

} // namespace tidewright
