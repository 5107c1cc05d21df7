// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/table/ContainerCopy.h"

#include "platform/threads/MainQueue.h"
#include "resources/changes/ClusterChange.h"
#include "resources/table/SharedContentViewController.h"

#include <QFileInfo>

namespace tidewright {

namespace {

const auto nothingCopied = QStringLiteral("Nothing was copied");

/// A copy under way. What is left when the window has closed is not copied.
struct Copy
{
    QPointer<SharedContentViewController> table;
    QPointer<Console> console;
    QStringList arguments; // before the path
    QStringList behind; // the path
    QStringList paths;
    std::shared_ptr<Shell> shell; // of all of them: what the window turns to meanwhile is not theirs
    QString context;
    QString destination; // where the context led at first; empty when that is not known
    qsizetype number = 0;
};

/// Each kubectl reads the user's files again. Why the next one must not be started; empty when it may, or
/// there is none. Blocks.
QString obstacleOf(const Copy &copy)
{
    if (copy.number == copy.paths.size() || copy.destination.isEmpty()) {
        return {};
    }
    QString unread;
    const auto now = readKubeConfig(*copy.shell, unread);
    if (!now || now->destination(copy.context) == copy.destination) {
        return unread;
    }
    return QStringLiteral("the context %1 leads elsewhere by now").arg(copy.context);
}

void copyNext(const std::shared_ptr<Copy> &copy, const QString &obstacle = {})
{
    if (copy->number == copy->paths.size()) {
        return;
    }
    const QString reason = copy->table ? obstacle : QStringLiteral("their window was closed");
    if (!reason.isEmpty()) {
        postConsoleEntry(copy->console, QString(), QString(),
            makeConsoleError(QStringLiteral("Files that were not copied, because %1: %2.")
                                 .arg(reason, copy->paths.mid(copy->number).join(QLatin1String(", ")))));
        if (copy->table) {
            copy->table->setLoading(false);
        }
        return;
    }
    const QString path = copy->paths.at(copy->number++);
    const QString progress = copy->paths.size() == 1
        ? QStringLiteral("copy of %1").arg(QFileInfo(path).fileName())
        : QStringLiteral("copy %1 of %2: %3")
              .arg(copy->number)
              .arg(copy->paths.size())
              .arg(QFileInfo(path).fileName());
    if (copy->console) {
        copy->console->begin(progress);
    }
    const bool isLast = copy->number == copy->paths.size();
    copy->shell->runToldAsync(copy->arguments + QStringList{path} + copy->behind, copy->console,
        [copy, progress](const ShellResult &) {
            mainQueue().post([copy, progress, obstacle = obstacleOf(*copy)] {
                if (copy->console) {
                    copy->console->end(progress);
                }
                copyNext(copy, obstacle);
            });
        });
    if (isLast) {
        copy->table->setLoading(false);
    }
}

/// Those that can be copied; the others are told in the console.
QStringList withoutColons(const QStringList &paths, WindowState &window)
{
    QStringList kept;
    for (const QString &path : paths) {
        if (path.contains(QLatin1Char(':'))) {
            refuseChange(window, QStringLiteral("%1 was not copied").arg(path),
                QStringLiteral(
                    "kubectl takes what stands before the colon for the name of a pod. Rename it, or "
                    "copy it from a folder without a colon in its path."));
        } else {
            kept.append(path);
        }
    }
    return kept;
}

} // namespace

bool canCopyInto(const SharedContentViewController &table, const ContainerPair &container)
{
    const auto &[pod, name, nameSpace] = container;
    return allowsNames(
        table.kubeSplitViewController(), table.kind(), {{nameSpace, pod}, {nameSpace, name}}, nothingCopied);
}

void copyIntoContainer(SharedContentViewController &table, const ContainerPair &container,
    const QStringList &paths, const QString &destination)
{
    if (!canCopyInto(table, container)) {
        return;
    }
    WindowState &window = table.kubeSplitViewController();
    const auto copy = std::make_shared<Copy>();
    copy->table = &table;
    copy->console = window.console();
    copy->arguments = QStringList{QStringLiteral("kubectl"), QStringLiteral("cp")}
        + placeArguments(window.currentContext(), container.nameSpace);
    copy->behind
        = {container.pod + QLatin1Char(':') + destination, QStringLiteral("-c"), container.container};
    copy->paths = withoutColons(paths, window);
    if (copy->paths.isEmpty()) {
        return;
    }
    window.whenSettled([copy, place = ChangePlace(window)](const QString &obstacle) {
        if (!place.window) {
            refuseUnseenChange(place, nothingCopied, obstacle);
        } else if (copy->table && !obstacle.isEmpty()) {
            refuseChange(copy->table->kubeSplitViewController(), nothingCopied, obstacle);
        } else if (copy->table) {
            const KubeCtl &kubeCtl = place.window->kubeCtl();
            copy->shell = kubeCtl.makeShell();
            copy->context = place.context;
            copy->destination = kubeCtl.contents().destination(place.context);
            copy->table->setLoading(true);
            copyNext(copy);
        }
    });
}

} // namespace tidewright
