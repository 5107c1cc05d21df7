// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/listing/ListingPipeline.h"

namespace tidewright {

/// What is wrong with a load that came to its end: a sentence for the user, details on further lines; empty
/// when nothing is.
QString loadProblem(const LoadOutcome &outcome);

/// Whether kubectl had something to say, and yet listed all objects.
bool hasOnlyWarned(const LoadOutcome &outcome);

/// kubectl writes log lines for its developers ("E1122 21:14:24.176194 12847 memcache.go:265] ...") before
/// the sentence for its user; a long value goes on below its line, from `=<` to a line with ` >`. That
/// sentence comes first here; the log lines follow once each, without their time. Before all of it stands
/// what `helperProblem` says.
QString sentenceFirst(const QString &errorText);

/// Of a kubectl that could not sign in because a program that does it for it was not found: which one, and
/// what the user can do about it, a sentence or two. Empty when that is not what the error text says.
QString helperProblem(const QString &errorText);

/// Of a load that brought nothing: why this kind is out of reach, because the cluster does not serve it or
/// the user may not list it: the problem's first line. Empty when that is not what is wrong.
QString kindObstacle(const QString &problem);

/// The first line of a text.
QString firstLine(const QString &text);

} // namespace tidewright
