// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/decoding/RowOfLine.h"

namespace tidewright {

namespace {

Fields fieldsOf(QByteArrayView line)
{
    Fields fields;
    qsizetype begin = 0;
    for (qsizetype end = 0; (end = line.indexOf('\t', begin)) >= 0; begin = end + 1) {
        fields.push_back(line.sliced(begin, end - begin));
    }
    fields.push_back(line.sliced(begin));
    return fields;
}

/// Of a kind that live streams tell no more of, all of it.
QByteArrayView listedPartOf(const ResourceKind &kind, QByteArrayView line)
{
    return kind.assignLive ? listedPart(line) : line;
}

void assign(const ResourceKind &kind, const QByteArray &line, KubeTableItem &row)
{
    const QByteArrayView listed = listedPartOf(kind, line);
    kind.assign(fieldsOf(listed), row);
    if (listed.size() < line.size()) {
        if (const Fields fields = fieldsOf(livePart(line)); fields.size() == kind.liveFieldCount) {
            kind.assignLive(fields, row);
        }
    }
    row.line = line;
    if (kind.lineTaken) {
        kind.lineTaken(listed);
    }
}

} // namespace

bool lineFits(const ResourceKind &kind, QByteArrayView line)
{
    const QByteArrayView listed = listedPartOf(kind, line);
    return static_cast<std::size_t>(listed.count('\t')) + 1 == kind.fieldCount && !listed.contains('\n');
}

Row newRow(const ResourceKind &kind, const QString &nameSpace, const QByteArray &line, double moment)
{
    const auto row = kind.create(QString::fromUtf8(line.left(line.indexOf('\t'))));
    row->nameSpace = nameSpace;
    if (kind.firstListed) {
        kind.firstListed(*row, moment);
    }
    assign(kind, line, *row);
    return row;
}

Row changedRow(const ResourceKind &kind, const Row &previous, const QByteArray &line)
{
    if (previous->line == line) {
        return previous;
    }
    const auto row = kind.copy(*previous);
    assign(kind, line, *row);
    return kind.equal(*row, *previous) ? previous : row;
}

} // namespace tidewright
