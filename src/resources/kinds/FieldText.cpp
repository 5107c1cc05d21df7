// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/FieldText.h"

#include <QHash>
#include <QStringList>

#include <charconv>

namespace tidewright {

namespace {

constexpr QLatin1String listGlue(", ");

/// Multiplies by the unit that a quantity ends in; 0 for what is no unit.
double unitOf(QStringView suffix)
{
    static const QHash<QString, double> units{{QString(), 1}, {QStringLiteral("n"), 1e-9},
        {QStringLiteral("u"), 1e-6}, {QStringLiteral("m"), 1e-3}, {QStringLiteral("k"), 1e3},
        {QStringLiteral("M"), 1e6}, {QStringLiteral("G"), 1e9}, {QStringLiteral("T"), 1e12},
        {QStringLiteral("P"), 1e15}, {QStringLiteral("E"), 1e18}, {QStringLiteral("Ki"), 0x1p10},
        {QStringLiteral("Mi"), 0x1p20}, {QStringLiteral("Gi"), 0x1p30}, {QStringLiteral("Ti"), 0x1p40},
        {QStringLiteral("Pi"), 0x1p50}, {QStringLiteral("Ei"), 0x1p60}};
    return units.value(suffix.toString(), 0);
}

} // namespace

qint64 integerOf(QByteArrayView field)
{
    if (field.startsWith('+') && !field.startsWith("+-")) {
        field = field.sliced(1);
    }
    qint64 number = 0;
    const auto [rest, error] = std::from_chars(field.begin(), field.end(), number);
    return error == std::errc() && rest == field.end() ? number : 0;
}

QString textOf(QByteArrayView field)
{
    return QString::fromUtf8(field);
}

QString presentTextOf(QByteArrayView field)
{
    const QString text = textOf(field);
    return text == missingValue ? QString() : text;
}

QString labelsTextOf(QByteArrayView field)
{
    constexpr QByteArrayView begin("map[");
    if (!field.startsWith(begin) || !field.endsWith(']')) {
        return {};
    }
    QStringList labels
        = textOf(field.sliced(begin.size()).chopped(1)).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (QString &label : labels) {
        if (const qsizetype colon = label.indexOf(QLatin1Char(':')); colon >= 0) {
            label[colon] = QLatin1Char('=');
        }
    }
    return labels.join(listGlue);
}

QString joinedPieces(const QString &text, QChar separator, QLatin1String glue)
{
    return text.split(separator, Qt::SkipEmptyParts).join(glue);
}

QString withoutMissingValues(const QString &text)
{
    if (!text.contains(missingValue)) {
        return text;
    }
    QStringList pieces = text.split(listGlue);
    for (QString &piece : pieces) {
        if (piece.startsWith(missingValue + QLatin1Char(':'))) {
            piece = piece.mid(missingValue.size() + 1);
        } else if (piece == missingValue || piece == missingValue + QLatin1Char('/') + missingValue) {
            piece.clear();
        }
    }
    pieces.removeAll(QString());
    return pieces.join(listGlue);
}

double quantityOf(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    double number = 0;
    const auto [rest, error] = std::from_chars(bytes.begin(), bytes.end(), number);
    const double unit = error == std::errc() ? unitOf(QString::fromUtf8(rest, bytes.end() - rest)) : 0;
    return unit > 0 ? number * unit : -1;
}

} // namespace tidewright
