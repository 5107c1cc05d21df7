// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <array>
#include <functional>

namespace tidewright {

/// Reads the two output pipes of one child together, so that neither can fill up while the other is waited
/// for. Used on one thread.
class PipeReader
{
public:
    enum class Stream { Output, Error };
    enum class End {
        EndOfFile, ///< both pipes came to their end
        Stopped, ///< the stop descriptor became readable; what was in the pipes then has been delivered
        ChildGone, ///< the exit descriptor became readable and what was in the pipes then has been delivered
        Refused, ///< the handler asked to stop
    };
    /// Gets each piece as it was read; false ends the reading.
    using Handler = std::function<bool(Stream, QByteArrayView)>;

    PipeReader(int output, int error);

    /// A readable `stop` ends the reading at once. With an `exit` descriptor (-1: none) the reading does not
    /// wait for grandchildren that keep a pipe open after the child is gone.
    End read(int stop, int exit, const Handler &handler);

private:
    enum class Piece { Delivered, Nothing, Refused };
    Piece readPiece(Stream stream, const Handler &handler);
    /// Reads up to that many pieces; false when the handler wants no more.
    bool drain(Stream stream, int pieces, const Handler &handler);
    bool drainAvailable(const Handler &handler);

    std::array<int, 2> m_descriptors; // -1 once at its end
    QByteArray m_buffer;
};

} // namespace tidewright
