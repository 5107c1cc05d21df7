// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <optional>

namespace tidewright {

/// An object as `kubectl get -o yaml` prints it: maps, lists and texts; of the plain scalars true, false and
/// null are what they look like, numbers stay texts. Nothing for what is no YAML map, is nested too deeply,
/// or would fill the memory (more than 8 MiB, or than 200,000 values with its aliases written out). Any
/// thread.
std::optional<QJsonObject> objectOfYaml(const QByteArray &yaml);

} // namespace tidewright
