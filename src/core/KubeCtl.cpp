// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/KubeCtl.h"

#include "core/ApplicationRecord.h"
#include "platform/MainQueue.h"

#include <QFile>

namespace tidewright {

namespace {

/// "No contexts", "Namespace x": what could not be loaded.
void reportFailure(const QString &what, const QString &errorText)
{
    postConsoleError(what
        + QLatin1String(" could be loaded.  Please ensure you have access and try again. \n\nGot error: ")
        + errorText);
}

void reportNotLoaded(const QString &what, const QString &errorText)
{
    postConsoleError(what
        + QLatin1String(" could not be loaded.  Please ensure you have access and try again. \n\nGot error: ")
        + errorText);
}

QStringList textPieces(const QByteArray &output, char16_t separator)
{
    return QString::fromUtf8(output).split(QChar(separator), Qt::SkipEmptyParts);
}

} // namespace

QString namespaceArgument(const QString &currentNamespace)
{
    return currentNamespace == allNamespaces ? QStringLiteral("--all-namespaces")
                                             : QLatin1String("-n") + currentNamespace;
}

QString contextArgument(const QString &context)
{
    return QLatin1String("--context=") + context;
}

std::shared_ptr<Shell> KubeCtl::makeShell() const
{
    auto shell = Shell::create();
    if (!configPath.isEmpty()) {
        shell->environment.insert(QByteArrayLiteral("KUBECONFIG"), QFile::encodeName(configPath));
    }
    return shell;
}

std::shared_ptr<Shell> KubeCtl::loadContexts(ContextsLoaded completion, Failed failed) const
{
    auto shell = makeShell();
    const QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("config"), QStringLiteral("view"),
        QStringLiteral("-ojsonpath={.current-context}\n{range .contexts[*]}{.name}\t{end}")};
    shell->runAsync(arguments, false, mainConsole(),
        [completion = std::move(completion), failed = std::move(failed), run = shell.get()](
            const ShellResult &result) {
            if (run->isCancelled()) {
                return;
            }
            if (result.error) {
                reportFailure(QStringLiteral("No contexts"), *result.error);
            }
            QStringList lines = textPieces(result.output, u'\n');
            if (lines.isEmpty()) {
                postConsoleError(
                    QStringLiteral("No contexts could be found when running `kubectl config view`.  "
                                   "Please ensure you have access to a context and try again."));
                if (failed) {
                    failed(result.error.value_or(QString()));
                }
                return;
            }
            if (lines.size() == 1) {
                lines.prepend(QString()); // a kubeconfig without a current context: the user may choose one
            }
            completion(lines.at(1).split(QLatin1Char('\t'), Qt::SkipEmptyParts), lines.first());
        });
    return shell;
}

std::shared_ptr<Shell> KubeCtl::loadNamespaces(NamespacesLoaded completion, Failed failed) const
{
    auto shell = makeShell();
    const QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("get"), QStringLiteral("ns"),
        QStringLiteral("-o=jsonpath={.items[*].metadata.name}")};
    shell->runAsync(arguments, true, nullptr,
        [completion = std::move(completion), failed = std::move(failed), run = shell.get()](
            const ShellResult &result) {
            if (result.error && !run->isCancelled()) {
                reportFailure(QStringLiteral("No namespaces"), *result.error);
            }
            if (result.error && failed) {
                failed(*result.error);
            }
            completion(textPieces(result.output, u' '));
        });
    return shell;
}

std::shared_ptr<Shell> KubeCtl::useContext(const QString &name, ContextUsed completion) const
{
    if (name.isEmpty()) {
        return nullptr;
    }
    auto shell = makeShell();
    const QStringList arguments{
        QStringLiteral("kubectl"), QStringLiteral("config"), QStringLiteral("use-context"), name};
    shell->runAsync(arguments, false, nullptr,
        [name, completion = std::move(completion), run = shell.get()](const ShellResult &result) {
            if (result.error) {
                if (!run->isCancelled()) {
                    reportNotLoaded(QLatin1String("Context ") + name, *result.error);
                }
                completion(false);
                return;
            }
            mainQueue().post([name, completion] {
                applicationRecord().appContext = name;
                completion(true);
            });
        });
    return shell;
}

std::shared_ptr<Shell> KubeCtl::setNamespace(const QString &name, NamespaceSet completion) const
{
    const auto record = [name, completion] {
        applicationRecord().appNamespace = name;
        if (completion) {
            completion(true);
        }
    };
    if (name == allNamespaces) {
        mainQueue().post(record);
        return nullptr;
    }
    auto shell = makeShell();
    shell->niceness = 5; // the visible table's listing starts at the same moment and comes first
    const QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("config"),
        QStringLiteral("set-context"), QStringLiteral("--current"), QLatin1String("--namespace=") + name};
    shell->runAsync(
        arguments, false, nullptr, [name, record, completion, run = shell.get()](const ShellResult &result) {
            if (!result.error) {
                mainQueue().post(record);
                return;
            }
            if (!run->isCancelled()) {
                reportNotLoaded(QLatin1String("Namespace ") + name, *result.error);
            }
            if (completion) {
                mainQueue().post([completion] { completion(false); });
            }
        });
    return shell;
}

} // namespace tidewright
