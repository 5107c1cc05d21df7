// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/kubeconfig/KubeConfigReading.h"

#include "core/running/Shell.h"

namespace tidewright {

QStringList readKubeConfigArguments()
{
    return {QStringLiteral("kubectl"), QStringLiteral("config"), QStringLiteral("view"),
        QStringLiteral("-ojson")};
}

std::optional<KubeConfigContents> readKubeConfig(Shell &shell, QString &failure)
{
    const auto parsed = [](const ShellResult &result) {
        return result.exitStatus == 0 ? KubeConfigContents::parse(result.output) : std::nullopt;
    };
    ShellResult result = shell.run(readKubeConfigArguments(), false);
    auto contents = parsed(result);
    if (contents && contents->contexts.isEmpty()) {
        result = shell.run(readKubeConfigArguments(), false); // kubectl empties a file before it writes it
        contents = parsed(result);
    }
    failure = contents ? QString() : result.failure();
    if (!contents && failure.isEmpty()) {
        failure = QStringLiteral("What kubectl printed is not a kubeconfig.");
    }
    return contents;
}

} // namespace tidewright
