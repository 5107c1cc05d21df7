// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/UserRights.h"

#include "resources/changes/ClusterChange.h"
#include "resources/live/ResourcePaths.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

namespace tidewright {

namespace {

/// Clients differ in the verb that they use, so any of the two will do.
struct NeededRight
{
    Deed deed;
    const char *doing; ///< %1: objects of the kind
    const char *verb;
    const char *orVerb;
    const char *subresource = "";
    const char *resource = nullptr; ///< null: that of the kind; empty: any
    const char *group = "";
    bool isChange = true;
};

constexpr std::array neededRights{
    NeededRight{
        Deed::List, QT_TRANSLATE_NOOP("UserRights", "list %1"), "list", "list", "", nullptr, "", false},
    NeededRight{Deed::Delete, QT_TRANSLATE_NOOP("UserRights", "delete %1"), "delete", "delete"},
    NeededRight{Deed::Edit, QT_TRANSLATE_NOOP("UserRights", "edit %1"), "patch", "update"},
    NeededRight{Deed::Change, QT_TRANSLATE_NOOP("UserRights", "change %1"), "patch", "update"},
    NeededRight{Deed::Scale, QT_TRANSLATE_NOOP("UserRights", "scale %1"), "patch", "update", "scale"},
    NeededRight{Deed::RunJob, QT_TRANSLATE_NOOP("UserRights", "create jobs"), "create", "create", "", "jobs",
        "batch"},
    NeededRight{Deed::OpenShell, QT_TRANSLATE_NOOP("UserRights", "run commands in pods"), "create", "get",
        "exec", "pods"},
    NeededRight{Deed::CopyFiles, QT_TRANSLATE_NOOP("UserRights", "run commands in pods, as a copy does,"),
        "create", "get", "exec", "pods"},
    NeededRight{Deed::ForwardPort, QT_TRANSLATE_NOOP("UserRights", "forward ports of pods"), "create", "get",
        "portforward", "pods"},
    NeededRight{Deed::ReadLogs, QT_TRANSLATE_NOOP("UserRights", "read the logs of pods"), "get", "get", "log",
        "pods", "", false},
    NeededRight{Deed::ReadValue, QT_TRANSLATE_NOOP("UserRights", "read secrets"), "get", "get", "", "secrets",
        "", false},
    NeededRight{Deed::Create, QT_TRANSLATE_NOOP("UserRights", "create anything"), "create", "create", "", ""},
    NeededRight{
        Deed::Apply, QT_TRANSLATE_NOOP("UserRights", "create or change anything"), "create", "patch", "", ""},
};

const NeededRight &neededFor(Deed deed)
{
    return *std::find_if(neededRights.begin(), neededRights.end(),
        [deed](const NeededRight &right) { return right.deed == deed; });
}

/// Where the cluster has the kind; nothing when that is not known.
std::optional<Access> accessTo(WindowState &window, const ResourceKind &kind)
{
    if (kind.printedTitles) { // listed by plural and group
        return Access{
            {}, kind.listWord.section(QLatin1Char('.'), 1), kind.listWord.section(QLatin1Char('.'), 0, 0)};
    }
    const QString server = window.kubeCtl().contents().server(window.currentContext());
    const auto path = ResourcePaths::of(server).find(kind.listWord);
    if (!path) {
        return std::nullopt;
    }
    const bool hasGroup = path->apiVersion.contains(QLatin1Char('/'));
    return Access{{}, hasGroup ? path->apiVersion.section(QLatin1Char('/'), 0, 0) : QString(), path->plural};
}

bool mayDoAny(const WindowState &window, Access access, const NeededRight &needed)
{
    access.subresource = QLatin1String(needed.subresource);
    access.verb = QLatin1String(needed.verb);
    if (window.mayDo(access)) {
        return true;
    }
    access.verb = QLatin1String(needed.orVerb);
    return window.mayDo(access);
}

QString sentence(const WindowState &window, const QString &doing, bool namespaced)
{
    return namespaced ? QCoreApplication::translate("UserRights", "You may not %1 in %2.")
                            .arg(doing, window.currentNamespace())
                      : QCoreApplication::translate("UserRights", "You may not %1.").arg(doing);
}

QString obstacleOf(WindowState &window, const ResourceKind *kind, Deed deed, const ObjectNames &objects)
{
    const NeededRight &needed = neededFor(deed);
    const QString doing = QCoreApplication::translate("UserRights", needed.doing);
    const bool isOfKind = !needed.resource;
    auto access = isOfKind
        ? (kind ? accessTo(window, *kind) : std::nullopt)
        : std::optional(Access{{}, QLatin1String(needed.group), QLatin1String(needed.resource)});
    if (!access) {
        return {};
    }
    bool may = (!isOfKind || objects.isEmpty()) && mayDoAny(window, *access, needed);
    for (const ObjectName &object : isOfKind ? objects : ObjectNames()) {
        access->name = object.name;
        may = may || mayDoAny(window, *access, needed);
    }
    if (may) {
        return {};
    }
    if (!isOfKind) {
        return sentence(window, doing, true);
    }
    const QString noun
        = kind->pluralNoun.isEmpty() ? kind->humanReadableResourceName + QLatin1Char('s') : kind->pluralNoun;
    return sentence(window, doing.arg(noun), kind->namespaced);
}

QString readOnlyObstacle(const WindowState &window, Deed deed)
{
    return neededFor(deed).isChange ? changeObstacle(window) : QString();
}

} // namespace

QString deedObstacle(WindowState &window, const ResourceKind &kind, Deed deed, const ObjectNames &objects)
{
    const QString reason = readOnlyObstacle(window, deed);
    return reason.isEmpty() ? rightsObstacle(window, kind, deed, objects) : reason;
}

QString deedObstacle(WindowState &window, Deed deed)
{
    const QString reason = readOnlyObstacle(window, deed);
    return reason.isEmpty() ? obstacleOf(window, nullptr, deed, {}) : reason;
}

QString rightsObstacle(WindowState &window, const ResourceKind &kind, Deed deed, const ObjectNames &objects)
{
    return obstacleOf(window, &kind, deed, objects);
}

} // namespace tidewright
