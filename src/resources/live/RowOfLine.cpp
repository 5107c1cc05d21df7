// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/RowOfLine.h"

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

void assign(const ResourceKind &kind, const QByteArray &line, KubeTableItem &row)
{
    kind.assign(fieldsOf(line), row);
    row.listingLine = line;
    if (kind.lineTaken) {
        kind.lineTaken(line);
    }
}

} // namespace

bool lineFits(const ResourceKind &kind, QByteArrayView line)
{
    return static_cast<std::size_t>(line.count('\t')) + 1 == kind.fieldCount && !line.contains('\n');
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
    if (previous->listingLine == line) {
        return previous;
    }
    const auto row = kind.copy(*previous);
    assign(kind, line, *row);
    return kind.equal(*row, *previous) ? previous : row;
}

} // namespace tidewright
