// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

namespace tidewright {

/// What a cluster window's context list or namespace list shows.
struct ChoiceList
{
    QStringList entries = {};
    QString selected = {}; ///< empty when no entry is
    bool loading = false; ///< "Loading..." stands in place of the entries
    bool enabled = false;
    bool acceptsOthers = false; ///< the entries need not be all there are: the user may name another one
};

} // namespace tidewright
