// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/live/ResourcePaths.h"

#include "core/KubeCtl.h"

#include <QUrl>

#include <array>

namespace tidewright {

namespace {

struct UsualPlace
{
    const char *word;
    const char *apiVersion;
    const char *plural;
    bool isNamespaced = true;
};

/// One for each kind, by its ResourceKind::listWord: a kind that is missing here is not followed. Unchanged
/// since 1.19, but for cron jobs, which are in batch/v1 since 1.21, and autoscalers, in autoscaling/v2
/// since 1.23.
constexpr std::array<UsualPlace, 26> usualPlaces{{
    {"po", "v1", "pods"},
    {"deploy", "apps/v1", "deployments"},
    {"rs", "apps/v1", "replicasets"},
    {"ds", "apps/v1", "daemonsets"},
    {"job", "batch/v1", "jobs"},
    {"cj", "batch/v1", "cronjobs"},
    {"services", "v1", "services"},
    {"ep", "v1", "endpoints"},
    {"configmaps", "v1", "configmaps"},
    {"secrets", "v1", "secrets"},
    {"persistentvolumes", "v1", "persistentvolumes", false},
    {"serviceaccounts", "v1", "serviceaccounts"},
    {"clusterroles", "rbac.authorization.k8s.io/v1", "clusterroles", false},
    {"events", "v1", "events"},
    {"statefulsets", "apps/v1", "statefulsets"},
    {"nodes", "v1", "nodes", false},
    {"namespaces", "v1", "namespaces", false},
    {"ingresses.networking.k8s.io", "networking.k8s.io/v1", "ingresses"},
    {"persistentvolumeclaims", "v1", "persistentvolumeclaims"},
    {"storageclasses", "storage.k8s.io/v1", "storageclasses", false},
    {"hpa", "autoscaling/v2", "horizontalpodautoscalers"},
    {"networkpolicies.networking.k8s.io", "networking.k8s.io/v1", "networkpolicies"},
    {"roles", "rbac.authorization.k8s.io/v1", "roles"},
    {"rolebindings", "rbac.authorization.k8s.io/v1", "rolebindings"},
    {"clusterrolebindings", "rbac.authorization.k8s.io/v1", "clusterrolebindings", false},
    {"customresourcedefinitions", "apiextensions.k8s.io/v1", "customresourcedefinitions", false},
}};

/// The position of the column that says whether a resource is namespaced; the kind is behind it. -1: no such
/// line.
qsizetype namespacedColumn(const QByteArrayList &columns)
{
    for (qsizetype i = 2; i + 1 < columns.size() && i <= 3; ++i) {
        if (columns[i] == "true" || columns[i] == "false") {
            return i;
        }
    }
    return -1;
}

} // namespace

QString ResourcePath::listPath(const QString &server, const QString &nameSpace) const
{
    QString path = QUrl(server).path(QUrl::FullyEncoded);
    while (path.endsWith(QLatin1Char('/'))) {
        path.chop(1);
    }
    path += (apiVersion.contains(QLatin1Char('/')) ? QLatin1String("/apis/") : QLatin1String("/api/"))
        + apiVersion + QLatin1Char('/');
    if (isNamespaced && nameSpace != allNamespaces) {
        path += QLatin1String("namespaces/") + QString::fromLatin1(QUrl::toPercentEncoding(nameSpace))
            + QLatin1Char('/');
    }
    return path + plural;
}

QString labelSelectorQuery(const QString &selector)
{
    return selector.isEmpty()
        ? QString()
        : QLatin1String("&labelSelector=") + QString::fromLatin1(QUrl::toPercentEncoding(selector));
}

ResourcePaths &ResourcePaths::of(const QString &server)
{
    static QHash<QString, std::shared_ptr<ResourcePaths>> clusters;
    std::shared_ptr<ResourcePaths> &paths = clusters[server];
    if (!paths) {
        paths = std::make_shared<ResourcePaths>();
    }
    return *paths;
}

QStringList ResourcePaths::discoveryArguments()
{
    return {QStringLiteral("api-resources"), QStringLiteral("-owide"), QStringLiteral("--no-headers")};
}

void ResourcePaths::stateWatchFailed(bool forGood)
{
    m_hasAnsweredWatch = false;
    m_cannotWatchState |= forGood;
}

void ResourcePaths::learn(const QByteArray &apiResources)
{
    QHash<QString, ResourcePath> learned;
    const auto add = [&learned](const QByteArray &word, const ResourcePath &path) {
        const QString key = QString::fromUtf8(word);
        if (!learned.contains(key)) { // the groups come in the order in which kubectl looks them up
            learned.insert(key, path);
        }
    };
    for (const QByteArray &line : apiResources.split('\n')) {
        const QByteArrayList columns = line.simplified().split(' ');
        const qsizetype namespaced = namespacedColumn(columns);
        if (namespaced < 0) {
            continue;
        }
        const QByteArray verbs = columns.sliced(namespaced + 2).join(',');
        const ResourcePath path{QString::fromUtf8(columns[namespaced - 1]), QString::fromUtf8(columns[0]),
            columns[namespaced] == "true", verbs.contains("list") && verbs.contains("watch")};
        add(columns[0], path);
        for (const QByteArray &shortName : namespaced == 3 ? columns[1].split(',') : QByteArrayList()) {
            add(shortName, path);
        }
        add(columns[namespaced + 1].toLower(), path); // the kind in lower case is the singular
        if (const qsizetype slash = columns[namespaced - 1].indexOf('/'); slash > 0) {
            add(columns[0] + '.' + columns[namespaced - 1].first(slash), path);
        }
    }
    if (!learned.isEmpty()) {
        m_learned = learned;
        m_hasLearned = true;
    }
}

std::optional<ResourcePath> ResourcePaths::find(const QString &word) const
{
    if (const auto found = m_learned.constFind(word); found != m_learned.cend()) {
        return *found;
    }
    for (const UsualPlace &place : usualPlaces) {
        if (!m_hasLearned && word == QLatin1String(place.word)) {
            return ResourcePath{
                QString::fromLatin1(place.apiVersion), QString::fromLatin1(place.plural), place.isNamespaced};
        }
    }
    return std::nullopt;
}

} // namespace tidewright
