// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/CopyFile.h"

#include "app/content/CopyFileDialog.h"
#include "pods/table/ContainerCopy.h"
#include "pods/table/PodController.h"
#include "resources/changes/ChangeQuestion.h"

namespace tidewright {

namespace {

const auto nothingCopied = QStringLiteral("Nothing was copied");

void copyFiles(PodController &pods, const ContainerPair &container, const QStringList &paths,
    const QString &destination, const ChangePlace &place)
{
    if (place.isStillShown()) {
        copyIntoContainer(pods, container, paths, destination);
    } else if (place.window) {
        refuseMovedChange(*place.window, nothingCopied);
    }
}

} // namespace

void copyFileDialog(PodController &pods)
{
    WindowState &window = pods.kubeSplitViewController();
    if (!allows(window, nothingCopied, changeObstacle(window))) {
        return;
    }
    const std::vector<ContainerPair> pairs = pods.selectedContainerPairs();
    if (pairs.empty() || !canCopyInto(pods, pairs.front())) {
        return;
    }
    pods.takeSelectedContainerPairs();
    const ChangePlace place(window);
    const auto &[pod, name, nameSpace] = pairs.front();
    const QString target = QObject::tr("Container: %1\nPod: %2").arg(name, pod) + QLatin1Char('\n')
        + place.text(pods.kind(), nameSpace);
    CopyFileDialog::open(pods.window(), &pods, target,
        [&pods, container = pairs.front(), target, place](
            const QStringList &paths, const QString &destination) {
            confirmWhereProtected(&pods, place.key(),
                {.title = QObject::tr("Confirm Copy"),
                    .message = QObject::tr("Are you sure you want to copy to %1:\n    ").arg(destination)
                        + paths.join(QLatin1String(",\n    ")),
                    .yes = QObject::tr("Copy"),
                    .accessory = confirmationDetails(target)},
                [table = QPointer(&pods), container, paths, destination, place](bool confirmed) {
                    if (table && confirmed) {
                        copyFiles(*table, container, paths, destination, place);
                    }
                });
        });
}

} // namespace tidewright
