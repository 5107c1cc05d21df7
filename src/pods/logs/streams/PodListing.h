// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArrayView>
#include <QStringList>

#include <optional>
#include <vector>

namespace tidewright {

/// A container as the status of its pod tells of it.
struct LogContainer
{
    QString name;
    int restarts = 0;
    bool runs = false;
    bool hasLog = false; ///< of this instance: it runs or has run
};

struct LogPod
{
    QString name;
    QString uid;
    std::vector<LogContainer> containers; ///< init containers first
};

/// What `kubectl get pods` prints for `parsedPods`, one line for each pod.
QStringList podOutputArguments();
/// Lines that are none are left out.
std::vector<LogPod> parsedPods(QByteArrayView output);

/// The label selector, as `kubectl get -l` takes it, of the `.spec.selector` of a workload or a service in
/// JSON. Empty for one that selects nothing; nothing for what is no selector.
std::optional<QString> labelSelector(QByteArrayView json);

} // namespace tidewright
