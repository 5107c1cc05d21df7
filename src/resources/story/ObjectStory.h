// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ObjectName.h"

#include <QJsonObject>

#include <vector>

namespace tidewright {

/// A way from an object to another one, or to its pods.
struct Relation
{
    QString title; ///< what the other one is to this one, such as "Owner" or "Config Maps"
    QString kind; ///< of the other one: a singular in lower case and without blanks, such as "replicaset"
    ObjectName object; ///< without a name: the pods; without a namespace: the whole cluster's
};

/// One container of a pod, in words. What is not known is empty.
struct ContainerFacts
{
    QString name; ///< with what kind of container it is, unless it is a usual one
    QString state; ///< and since when
    QString lastState; ///< how the instance before ended, and when
    QString restarts;
    QString image;
    QString ports; ///< one each line, as the next
    QString probes;
    bool isInTrouble = false; ///< somebody has to look
    bool hadTrouble = false; ///< the instance before ended badly
};

/// What a user wants to know of an object beside its text, read from the object itself: names only, never the
/// data of a secret.
struct ObjectStory
{
    QString kind; ///< such as "ReplicaSet"
    QString uid; ///< as the events of the object name it; empty when they may name another
    bool hasSelector = false; ///< it says which pods belong to it
    std::vector<Relation> relations; ///< those of one title stand together
    std::vector<ContainerFacts> containers; ///< of a pod
};

/// `now` is in seconds since 1970. Takes objects of any shape. Any thread.
ObjectStory storyOf(const QJsonObject &object, double now);

/// The containers of a pod, those for its start first.
std::vector<ContainerFacts> containersOf(const QJsonObject &pod, double now);

} // namespace tidewright
