// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/changes/ClusterChange.h"

#include <vector>

namespace tidewright {

/// A port that an object declares.
struct DeclaredPort
{
    quint16 number = 0;
    QString name; ///< may be empty

    bool operator==(const DeclaredPort &) const = default;
};

/// Whether kubectl finds a pod behind an object of that kind to forward a port to.
bool canForwardTo(const ResourceKind &kind);

/// The TCP ports in what `kubectl get` prints for the form: lines of number, name and protocol, with tabs
/// between. Ports declared twice count once. Pure.
std::vector<DeclaredPort> readPorts(QByteArrayView printed);

/// Asks kubectl for the ports of an object, then the user over `view` which one to forward and to where, and
/// starts the forward in the list of all. What stands in the way is told in the window's console. Main
/// thread.
void forwardPort(QWidget &view, WindowState &window, const ResourceKind &kind, const ObjectName &object);

} // namespace tidewright
