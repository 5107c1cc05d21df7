// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/process/Environment.h"

#include <QString>

namespace tidewright {

/// The environments of children, complete: how PATH and KUBECONFIG come into them. Any thread.
namespace child_environment {

/// The application's own with the fixed PATH and the added program folders, for kubectl and what a window
/// runs in its place.
Environment withFixedPath();
/// The application's own with the added program folders behind its PATH, for programs that the user works in.
Environment withOwnPath();

/// Has kubectl pass over the user's preferences for it (kuberc), which may change what a verb does; and takes
/// that back, for commands that the user types.
void ignoreKubeRc(Environment &environment);
void restoreKubeRc(Environment &environment);

/// What KUBECONFIG is: a path, or a list of them separated by colons. An empty one leaves the application's.
void setKubeConfig(Environment &environment, const QString &files);
/// Empty without one.
QString kubeConfig(const Environment &environment);

} // namespace child_environment

} // namespace tidewright
