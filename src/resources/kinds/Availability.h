// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tidewright {

/// How many of the wanted ones there are, as the name of a state image: "NSStatusAvailable" when it is
/// enough, "NSStatusPartiallyAvailable" when it is at least one, otherwise "NSStatusUnavailable".
QString availabilityImage(qint64 available, qint64 wanted);
/// The same in words, for the cell beside the image.
QString availabilityText(qint64 available, qint64 wanted);

} // namespace tidewright
