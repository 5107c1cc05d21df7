// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// What kubectl wrote to its standard error when it gave up, as "Error from server (REASON): TEXT" or in
/// words of its own. Any thread.
struct KubectlComplaint
{
    QString text;

    /// The version, or the page, is too old for the server.
    bool isExpired() const;
    /// The server has nothing at this path.
    bool isUnknownPlace() const;
    /// It will not be better next time: no right to do it, a server or a client that does not know of it.
    bool isFinal() const;
    QString firstLine() const { return text.section(QLatin1Char('\n'), 0, 0); }
};

} // namespace tidewright
