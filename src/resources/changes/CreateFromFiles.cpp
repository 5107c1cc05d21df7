// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/CreateFromFiles.h"

#include "resources/changes/ClusterChange.h"
#include "resources/changes/FileArguments.h"

#include <QCoreApplication>

namespace tidewright {

QString nothingCreated()
{
    return QCoreApplication::translate("CreateFromFiles", "Nothing was created");
}

bool canCreateIn(WindowState &window)
{
    return canTakeFilesIn(window, nothingCreated());
}

void createFromFiles(WindowState &window, const QStringList &paths, std::function<void()> finished)
{
    if (paths.isEmpty() || !canCreateIn(window)) {
        return;
    }
    const auto files = fileArguments(window, paths, nothingCreated());
    if (!files) {
        return;
    }
    const QStringList arguments = QStringList{QStringLiteral("kubectl"), QStringLiteral("create")}
        + separatePlaceArguments(window.currentContext(), window.currentNamespace()) + *files;
    runChange(ChangePlace(window), arguments, nothingCreated(), std::move(finished));
}

} // namespace tidewright
