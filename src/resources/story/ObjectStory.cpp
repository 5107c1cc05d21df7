// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/story/ObjectStory.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>

namespace tidewright {

namespace {

/// Where an object names others. A path leads through maps, with "[]" behind a field through all that its
/// list holds; "pod." begins it where the specification of pods is. It ends at a name, or at a reference (a
/// map with name, namespace and kind).
struct Place
{
    const char *title;
    const char *kind; ///< of the other one; null: the reference tells
    const char *path;
};

constexpr Place places[] = {
    {QT_TRANSLATE_NOOP("ObjectStory", "Owner"), nullptr, "metadata.ownerReferences[]"},
    {QT_TRANSLATE_NOOP("ObjectStory", "About"), nullptr, "involvedObject"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Scales"), nullptr, "spec.scaleTargetRef"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Role"), nullptr, "roleRef"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Subjects"), nullptr, "subjects[]"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Node"), "node", "pod.nodeName"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Service"), "service", "spec.serviceName"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Services"), "service", "spec.defaultBackend.service.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Services"), "service",
        "spec.rules[].http.paths[].backend.service.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Service Account"), "serviceaccount", "pod.serviceAccountName"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Claims"), "persistentvolumeclaim",
        "pod.volumes[].persistentVolumeClaim.claimName"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Claim"), "persistentvolumeclaim", "spec.claimRef"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Volume"), "persistentvolume", "spec.volumeName"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Storage Class"), "storageclass", "spec.storageClassName"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Config Maps"), "configmap", "pod.volumes[].configMap.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Config Maps"), "configmap",
        "pod.volumes[].projected.sources[].configMap.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Config Maps"), "configmap",
        "pod.CONTAINERS.envFrom[].configMapRef.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Config Maps"), "configmap",
        "pod.CONTAINERS.env[].valueFrom.configMapKeyRef.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret", "pod.volumes[].secret.secretName"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret", "pod.volumes[].projected.sources[].secret.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret", "pod.volumes[].csi.nodePublishSecretRef.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret", "pod.CONTAINERS.envFrom[].secretRef.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret",
        "pod.CONTAINERS.env[].valueFrom.secretKeyRef.name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret", "pod.imagePullSecrets[].name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret", "spec.tls[].secretName"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret", "secrets[].name"},
    {QT_TRANSLATE_NOOP("ObjectStory", "Secrets"), "secret", "imagePullSecrets[].name"},
};

/// Kinds that the whole cluster shares, of those that places lead to.
bool isOfCluster(const QString &kind)
{
    static const QStringList kinds{QStringLiteral("node"), QStringLiteral("persistentvolume"),
        QStringLiteral("storageclass"), QStringLiteral("clusterrole"), QStringLiteral("namespace"),
        QStringLiteral("customresourcedefinition")};
    return kinds.contains(kind);
}

/// Names of people, which no cluster holds as objects.
bool isOfPeople(const QString &kind)
{
    return kind == QLatin1String("user") || kind == QLatin1String("group");
}

void follow(const QJsonValue &from, const QStringList &path, QList<QJsonValue> &found)
{
    if (path.isEmpty()) {
        found.append(from);
        return;
    }
    const QStringList rest = path.sliced(1);
    if (path.first() == QLatin1String("CONTAINERS")) {
        for (const char *list : {"initContainers[]", "containers[]", "ephemeralContainers[]"}) {
            follow(from, QStringList(QLatin1String(list)) + rest, found);
        }
    } else if (path.first().endsWith(QLatin1String("[]"))) {
        for (const QJsonValue &each : from[path.first().chopped(2)].toArray()) {
            follow(each, rest, found);
        }
    } else {
        follow(from[path.first()], rest, found);
    }
}

QJsonValue podSpecification(const QJsonObject &object)
{
    const QJsonValue spec = object[QLatin1String("spec")];
    const QString kind = object[QLatin1String("kind")].toString();
    if (kind == QLatin1String("Pod")) {
        return spec;
    }
    const QJsonValue job
        = kind == QLatin1String("CronJob") ? spec[QLatin1String("jobTemplate")][QLatin1String("spec")] : spec;
    return job[QLatin1String("template")][QLatin1String("spec")];
}

/// Of a name or a reference that was found; without a name when it is neither.
Relation relationTo(const QJsonValue &found, const Place &place, const QString &nameSpace)
{
    Relation relation{QCoreApplication::translate("ObjectStory", place.title),
        place.kind ? QString::fromLatin1(place.kind) : found[QLatin1String("kind")].toString().toLower(),
        {nameSpace, found.isString() ? found.toString() : found[QLatin1String("name")].toString()}};
    if (const QString other = found[QLatin1String("namespace")].toString(); !other.isEmpty()) {
        relation.object.nameSpace = other;
    }
    if (isOfCluster(relation.kind)) {
        relation.object.nameSpace.clear();
    }
    return relation;
}

void addRelation(const Relation &relation, std::vector<Relation> &relations)
{
    const auto isSame = [&](const Relation &other) {
        return other.kind == relation.kind && other.object == relation.object;
    };
    const bool leadsNowhere = relation.object.name.isEmpty() || relation.kind.isEmpty()
        || isOfPeople(relation.kind) || std::any_of(relations.cbegin(), relations.cend(), isSame);
    if (!leadsNowhere) {
        relations.push_back(relation);
    }
}

/// Events of a node name it by uid or by name, as they come from here or there; those of a pod that a node
/// made by itself have the uid that it has there.
QString uidInEvents(const QJsonObject &object)
{
    const QJsonValue metadata = object[QLatin1String("metadata")];
    if (object[QLatin1String("kind")].toString() == QLatin1String("Node")) {
        return {};
    }
    const QString onNode
        = metadata[QLatin1String("annotations")][QLatin1String("kubernetes.io/config.mirror")].toString();
    return onNode.isEmpty() ? metadata[QLatin1String("uid")].toString() : onNode;
}

} // namespace

ObjectStory storyOf(const QJsonObject &object, double now)
{
    ObjectStory story;
    story.kind = object[QLatin1String("kind")].toString();
    story.uid = uidInEvents(object);
    story.hasSelector = !object[QLatin1String("spec")][QLatin1String("selector")].toObject().isEmpty();
    const QString nameSpace = object[QLatin1String("metadata")][QLatin1String("namespace")].toString();
    const QJsonValue podSpec = podSpecification(object);
    for (const Place &place : places) {
        QStringList path = QString::fromLatin1(place.path).split(QLatin1Char('.'));
        const bool isOfPods = path.first() == QLatin1String("pod");
        QList<QJsonValue> found;
        follow(isOfPods ? podSpec : object, isOfPods ? path.sliced(1) : path, found);
        for (const QJsonValue &each : std::as_const(found)) {
            addRelation(relationTo(each, place, nameSpace), story.relations);
        }
    }
    if (!nameSpace.isEmpty()) {
        addRelation({QCoreApplication::translate("ObjectStory", "Namespace"), QStringLiteral("namespace"),
                        {QString(), nameSpace}},
            story.relations);
    }
    if (story.kind == QLatin1String("Pod")) {
        story.containers = containersOf(object, now);
    }
    return story;
}

} // namespace tidewright
