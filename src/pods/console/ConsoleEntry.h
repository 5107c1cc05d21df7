// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

namespace tidewright {

/// A command that ran and what it printed.
struct ConsoleEntry
{
    QDateTime date; ///< when the entry was added
    QString command; ///< as shown
    QString response; ///< whole; may be empty
};

} // namespace tidewright
