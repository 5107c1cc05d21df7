// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringList>

#include <vector>

namespace tidewright {

/// A table as kubectl prints it for people: a line of titles in capitals, and a line for each object. Columns
/// begin at the same character (code point, however wide or long in bytes) in all lines, with at least two
/// blanks before them; titles and cells may hold single blanks, cells may be empty, and a line may end before
/// its last cells. Any thread.
struct PrintedTable
{
    struct Line
    {
        /// As many as there are titles; none when the line fits neither the titles' places nor their number.
        std::vector<QByteArrayView> cells;
        QByteArrayView text;
    };
    QStringList titles; ///< empty when nothing was printed
    std::vector<Line> lines;

    /// The result refers to the bytes of `printed` (UTF-8). Titles that come again in between, for other
    /// widths, are no line.
    static PrintedTable parse(QByteArrayView printed);
};

/// The lines of a table of objects in the form of a listing: fields separated by tabs, the name first and the
/// others in their order; behind them the first column, when it is to be the namespace. What cannot be read
/// stays as it is.
QByteArray listingLines(const PrintedTable &table, bool namespaceFirst);

} // namespace tidewright
