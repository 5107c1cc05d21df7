// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/process/PipeReader.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tidewright {

namespace {

/// Of what can be read at once: more than a pipe holds, so that who goes on writing does not keep this going.
constexpr int mostPieces = 16;

} // namespace

PipeReader::PipeReader(int output, int error)
    : m_descriptors{output, error}
    , m_buffer(1 << 16, Qt::Uninitialized)
{
    for (const int fd : m_descriptors) {
        ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    }
}

PipeReader::End PipeReader::read(int stop, int exit, const Handler &handler)
{
    while (m_descriptors[0] >= 0 || m_descriptors[1] >= 0) {
        std::array<pollfd, 4> polled{{{m_descriptors[0], POLLIN, 0}, {m_descriptors[1], POLLIN, 0},
            {stop, POLLIN, 0}, {exit, POLLIN, 0}}};
        if (::poll(polled.data(), polled.size(), -1) < 0) {
            continue; // interrupted
        }
        if (polled[2].revents != 0) {
            drainAvailable(handler);
            return End::Stopped;
        }
        if (polled[3].revents != 0) {
            return drainAvailable(handler) ? End::ChildGone : End::Refused;
        }
        // What was printed before a complaint is read before it: that may tell that all has been printed.
        const bool complains = polled[1].revents != 0;
        if ((polled[0].revents != 0 || complains)
            && !drain(Stream::Output, complains ? mostPieces : 1, handler)) {
            return End::Refused;
        }
        if (complains && !drain(Stream::Error, 1, handler)) {
            return End::Refused;
        }
    }
    return End::EndOfFile;
}

PipeReader::Piece PipeReader::readPiece(Stream stream, const Handler &handler)
{
    int &fd = m_descriptors[static_cast<std::size_t>(stream)];
    const ssize_t got = ::read(fd, m_buffer.data(), static_cast<std::size_t>(m_buffer.size()));
    if (got > 0) {
        return handler(stream, QByteArrayView(m_buffer.constData(), got)) ? Piece::Delivered : Piece::Refused;
    }
    if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
        fd = -1;
    }
    return Piece::Nothing;
}

bool PipeReader::drain(Stream stream, int pieces, const Handler &handler)
{
    Piece piece = Piece::Delivered;
    for (int i = 0;
         i < pieces && m_descriptors[static_cast<std::size_t>(stream)] >= 0 && piece == Piece::Delivered;
         ++i) {
        piece = readPiece(stream, handler);
    }
    return piece != Piece::Refused;
}

bool PipeReader::drainAvailable(const Handler &handler)
{
    return drain(Stream::Output, mostPieces, handler) && drain(Stream::Error, mostPieces, handler);
}

} // namespace tidewright
