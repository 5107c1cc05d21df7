// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/ContainerShell.h"

#include "actions/ActionQueue.h"
#include "actions/ActionTerminal.h"
#include "core/running/ApplicationRecord.h"
#include "external/TerminalQuoting.h"
#include "resources/changes/ClusterChange.h"

#include <QRegularExpression>

namespace tidewright {

namespace {

const auto notOpened = QStringLiteral("No shell was opened");

/// For a terminal; see external/TerminalQuoting.h.
QString commandLine(
    const QString &kubectl, const QString &kubeConfig, const QString &context, const ContainerPair &container)
{
    const QStringList words = QStringList{kubectl, QStringLiteral("exec"), QStringLiteral("-it"),
                                  container.pod, QStringLiteral("-c"), container.container}
        + separateNamespaceArguments(container.nameSpace)
        + QStringList{QStringLiteral("--context"), context, QStringLiteral("--"), QStringLiteral("sh"),
            QStringLiteral("-c"), QStringLiteral("command -v bash >/dev/null && exec bash || exec sh")};
    QStringList line{QStringLiteral("env"), terminalAssignment(QStringLiteral("KUBECONFIG"), kubeConfig)};
    // Quotes about every word would make a line that nobody wants to read.
    static const QRegularExpression plainWord(QStringLiteral("\\A[A-Za-z0-9_./-]+\\z"));
    for (const QString &word : words) {
        line.append(word.contains(plainWord) ? word : terminalArgument(word));
    }
    return line.join(QLatin1Char(' '));
}

} // namespace

void openContainerShell(WindowState &window, const ContainerPair &container)
{
    window.whenSettled([place = ChangePlace(window), container](const QString &obstacle) {
        if (!allowsStart(place, notOpened, obstacle)
            || !allows(*place.window, notOpened, changeObstacle(*place.window))) {
            return;
        }
        ContainerPair named = container;
        if (named.nameSpace.isEmpty()) {
            named.nameSpace = place.nameSpace;
        }
        const KubeConfigCopy copy
            = place.window->kubeCtl().makeCopy(KubeConfigView::Lifetime::OnItsOwn, named.nameSpace);
        if (!allows(*place.window, notOpened, copy.problem)) {
            return;
        }
        const QString line = commandLine(kubectlPath(), copy.kubeConfig, place.context, named);
        const QString shown
            = commandLine(QStringLiteral("kubectl"), kubeConfigFiles(place.kubeConfig), place.context, named);
        customActionQueue().post([line, shown, view = copy.view] {
            actionTerminal()(line, shown, view ? view->path() : QString());
        });
    });
}

} // namespace tidewright
