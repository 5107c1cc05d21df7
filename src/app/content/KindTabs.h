// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ResourceKind.h"

#include <initializer_list>
#include <span>

namespace tidewright {

class SharedContentViewController;
class WindowState;

/// A tab of the house: its sidebar name, the scopes of actions that mean it, its kind, and what makes its
/// table.
struct KindTab
{
    const char *name;
    std::initializer_list<const char *> scopes;
    ResourceKind (*kind)();
    SharedContentViewController *(*make)(WindowState &);
    bool isLoadedUnseen = true; ///< with the one that is shown, when it has another context or namespace

    /// The name in lower case.
    QString key() const;
};

/// In the order of the stack of tables; the first is the one that a window begins with.
std::span<const KindTab> kindTabs();
/// The tab of that key, or null.
const KindTab *kindTab(const QString &key);

} // namespace tidewright
