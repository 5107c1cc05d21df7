// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// What somebody wants to do to objects of one kind, in the words of Kubernetes' access rules.
struct Access
{
    QString verb; ///< "delete", "patch" ...
    QString group; ///< of the kind, without a version; empty for the oldest kinds
    QString resource; ///< the kind's plural; empty for any kind at all
    QString subresource = {}; ///< a part of the object, such as "exec" of a pod
    QString name = {}; ///< of the object; empty for any
};

} // namespace tidewright
