// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/ListingPipeline.h"

namespace tidewright {

/// What is wrong with a load that came to its end: a sentence for the user, details on further lines; empty when nothing is.
QString loadProblem(const LoadOutcome &outcome);

/// The first line of a text.
QString firstLine(const QString &text);

} // namespace tidewright
