// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/kinds/FreeText.h"

#include "platform/text/Timestamp.h"

#include <algorithm>

namespace tidewright::free_text {

namespace {

constexpr std::size_t mostLines = 200; // of one object
constexpr qsizetype longestTime = 40;

std::size_t fieldsIn(QByteArrayView line)
{
    return static_cast<std::size_t>(line.count('\t')) + 1;
}

/// Whether the last line of an object ends as one does: with a time, or kubectl's word for none, so many
/// fields before its end.
bool endsWithTime(QByteArrayView line, std::size_t fieldsBehind)
{
    for (; fieldsBehind > 0; --fieldsBehind) {
        line = line.first(std::max<qsizetype>(0, line.lastIndexOf('\t')));
    }
    const QByteArrayView field = line.sliced(line.lastIndexOf('\t') + 1);
    return field == "<no value>"
        || parseTimestamp(QString::fromUtf8(field.first(std::min(longestTime, field.size()))));
}

} // namespace

std::vector<QByteArrayView> wholeLines(
    const std::vector<QByteArrayView> &lines, std::size_t textField, std::size_t fields)
{
    std::vector<QByteArrayView> whole;
    whole.reserve(lines.size());
    for (std::size_t first = 0, next = 0; first < lines.size(); first = next) {
        next = first + 1;
        std::size_t found = 1;
        const bool begins = fieldsIn(lines[first]) > textField; // else it is a part of something else
        const std::size_t end = begins ? std::min(lines.size(), first + mostLines) : first;
        for (std::size_t last = first; last < end; ++last) {
            found += fieldsIn(lines[last]) - 1;
            if (found >= fields && endsWithTime(lines[last], fields - textField - 2)) {
                next = last + 1;
                break;
            }
        }
        whole.emplace_back(lines[first].begin(), lines[next - 1].end());
    }
    return whole;
}

QByteArray onOneLine(QByteArrayView line, std::size_t textField, std::size_t fields)
{
    QByteArray result = line.toByteArray();
    if (fieldsIn(line) < fields) {
        return result;
    }
    qsizetype begin = 0;
    for (std::size_t field = 0; field < textField; ++field) {
        begin = result.indexOf('\t', begin) + 1;
    }
    qsizetype end = result.size();
    for (std::size_t field = fields - 1; field > textField; --field) {
        end = result.lastIndexOf('\t', end - 1);
    }
    const QByteArray text = result.mid(begin, end - begin).replace('\t', ' ').replace('\n', ' ').trimmed();
    return result.replace(begin, end - begin, text);
}

} // namespace tidewright::free_text
