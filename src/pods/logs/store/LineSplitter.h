// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <vector>

namespace tidewright {

/// Finds where lines begin in a text that comes in pieces, wherever those are cut. A line ends with a line
/// feed, a carriage return, or both; so each state of a progress bar is a line. A line that is too long to be
/// laid out in one go continues in a further one, cut between characters and outside of escape sequences. A
/// value: a copy goes on from the same place.
class LineSplitter
{
public:
    /// About the bytes of the longest line.
    static constexpr qsizetype longestLine = 4096;

    /// Takes the next piece and adds the positions at which lines begin to `starts`, counted in
    /// bytes from the beginning of the text. A line is only there once its first byte is.
    void feed(QByteArrayView piece, std::vector<qint64> &starts);
    /// The lines so far, of which a long one counts once.
    qint64 lines() const { return m_lines; }

private:
    enum class Place { BehindEnd, BehindReturn, Inside };

    void takeText(const char *text, qint64 length, std::vector<qint64> &starts);

    Place m_place = Place::BehindEnd;
    qint64 m_position = 0;
    qint64 m_length = 0; ///< of the line so far
    qint64 m_lines = 0;
    QByteArray m_window; ///< the line's bytes around the place where it may have to be cut
};

} // namespace tidewright
