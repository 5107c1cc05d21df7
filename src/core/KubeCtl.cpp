// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/KubeCtl.h"

#include "core/running/ApplicationRecord.h"
#include "core/running/ChildEnvironment.h"
#include "platform/threads/MainQueue.h"

#include <thread>

namespace tidewright {

namespace {

constexpr int readBackAgain = 4;
constexpr std::chrono::milliseconds readBackPause(100);

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

/// The current context of a window that has none: kubectl says that there is no such context.
const auto noContext = QStringLiteral("(no context is chosen in this window)");

QString noView(const QString &problem)
{
    return QStringLiteral("The window could not fix the context for the command: %1.").arg(problem);
}

} // namespace

KubeCtl::KubeCtl()
    : m_place(std::make_shared<Place>())
{
}

void KubeCtl::adopt(const KubeConfigContents &contents, const QString &context)
{
    ++m_place->changes;
    m_place->contents = contents;
    m_place->problem.clear();
    m_place->view = KubeConfigView::make(
        contents, context.isEmpty() ? noContext : context, contents.nameSpace(context), m_place->problem, {});
}

std::shared_ptr<Shell> KubeCtl::makePlainShell() const
{
    auto shell = Shell::create();
    child_environment::setKubeConfig(shell->environment, configPath);
    child_environment::ignoreKubeRc(shell->environment);
    return shell;
}

StartingPlace KubeCtl::startingPlace() const
{
    return {configPath, m_place->view ? m_place->view->context() : QString(), m_place->contents};
}

std::shared_ptr<Shell> KubeCtl::makeShell() const
{
    const std::shared_ptr<const KubeConfigView> &view = m_place->view;
    return usesView()
        ? shellFor({view ? view->inFrontOf(kubeConfigFiles(configPath)) : QString(), view, obstacle()})
        : makePlainShell();
}

std::shared_ptr<Shell> KubeCtl::makeForeignShell() const
{
    auto shell = usesView() ? shellFor(makeCopy()) : makePlainShell();
    child_environment::restoreKubeRc(
        shell->environment); // the user's own words mean what they mean elsewhere
    return shell;
}

std::shared_ptr<Shell> KubeCtl::shellFor(const KubeConfigCopy &copy) const
{
    auto shell = makePlainShell();
    if (!copy.problem.isEmpty()) {
        shell->gate = [problem = copy.problem](const QStringList &) { return problem; };
        return shell;
    }
    child_environment::setKubeConfig(shell->environment, copy.kubeConfig);
    shell->needed = copy.view;
    shell->gate
        = [place = startingPlace()](const QStringList &arguments) { return gateReason(arguments, place); };
    shell->place = {kubeConfigFiles(configPath), copy.view->context(), copy.view->nameSpace()};
    return shell;
}

KubeConfigCopy KubeCtl::makeCopy(KubeConfigView::Lifetime lifetime, const QString &nameSpace) const
{
    const QString files = kubeConfigFiles(configPath);
    const std::shared_ptr<const KubeConfigView> &view = m_place->view;
    if (QString problem = obstacle(); !view || !problem.isEmpty()) {
        return {files, nullptr, problem};
    }
    QString problem;
    const auto copy = KubeConfigView::make(m_place->contents, view->context(),
        nameSpace.isEmpty() ? view->nameSpace() : nameSpace, problem,
        {.holds = KubeConfigView::Holds::AllContexts, .lifetime = lifetime});
    return copy ? KubeConfigCopy{copy->inFrontOf(files), copy} : KubeConfigCopy{{}, nullptr, noView(problem)};
}

QString KubeCtl::obstacle() const
{
    if (!closedBecause.isEmpty()) {
        return closedBecause;
    }
    return m_place->problem.isEmpty() ? QString() : noView(m_place->problem);
}

std::shared_ptr<Shell> KubeCtl::loadContexts(ContextsLoaded completion, Failed failed) const
{
    auto shell = makePlainShell();
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

std::shared_ptr<Shell> KubeCtl::loadNamespaces(NamespacesLoaded completion, Failed failed, int niceness) const
{
    auto shell = makeShell();
    shell->niceness = niceness;
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

std::shared_ptr<Shell> KubeCtl::readKubeConfig(KubeConfigRead completion) const
{
    auto shell = makePlainShell();
    shellQueue().post([shell, completion = std::move(completion)] {
        QString failure;
        const auto contents = tidewright::readKubeConfig(*shell, failure);
        mainQueue().post([completion, contents] { completion(contents); });
    });
    return shell;
}

/// One change of what is current: in a new view, or in the user's own kubeconfig when there is no view to
/// make. Made on the main thread, performed on the shell queue, taken over on the main thread.
struct KubeCtl::Change
{
    std::shared_ptr<Place> place;
    std::shared_ptr<Shell> shell;
    QString files;
    QString context;
    QString nameSpace = {}; ///< the one to be set; empty when the context is
    quint64 number = ++place->changes;
    KubeConfigContents contents = place->contents;
    View view = place->view;
    QString problemBefore = place->problem;

    /// Why it was not done; empty when it was.
    QString perform();
    /// False when a later change has the place already.
    bool take() const;

private:
    QString prepareView();
    QString readBack() const;
    void runOn(const QString &kubeConfig) const;
};

/// Another context is taken as the kubeconfig has it now: it may have been edited since it was read.
QString KubeCtl::Change::prepareView()
{
    QString problem;
    KubeConfigView::Options options;
    if (!nameSpace.isEmpty()) {
        if (!view) {
            return noView(problemBefore);
        }
        options.firstNamespace = view->nameSpace();
    } else if (const auto now = tidewright::readKubeConfig(*shell, problem)) {
        contents = *now;
        options.firstContext = noContext;
    } else {
        return problem;
    }
    view = KubeConfigView::make(
        contents, context, nameSpace.isEmpty() ? contents.nameSpace(context) : nameSpace, problem, options);
    if (!view) {
        return noView(problem);
    }
    return {};
}

/// What an empty text says is well. Another kubectl may be writing the user's file at this moment, and
/// empties it for that: a context that is missing then is there a moment later.
QString KubeCtl::Change::readBack() const
{
    QString failure;
    for (int again = 0; again <= readBackAgain && !shell->isCancelled(); ++again) {
        if (again > 0) {
            std::this_thread::sleep_for(readBackPause);
        }
        const auto now = tidewright::readKubeConfig(*shell, failure);
        if (!now) {
            return failure;
        }
        failure = QStringLiteral("kubectl ended well, but what it was to set is not there.");
        const bool isSet
            = nameSpace.isEmpty() ? now->current == context : now->nameSpace(now->current) == nameSpace;
        if (!isSet) {
            return failure;
        }
        if (now->hasContext(context) && now->destination(context) == contents.destination(context)) {
            return {};
        }
    }
    return failure;
}

QString KubeCtl::Change::perform()
{
    if (nameSpace.isEmpty() && context.startsWith(QLatin1Char('-'))) {
        return QStringLiteral("kubectl would take the name for an option.");
    }
    if (const QString problem = prepareView(); !problem.isEmpty()) {
        return problem;
    }
    // On the view alone: a kubectl that changes a kubeconfig locks every file that it merges, and one that is
    // killed leaves the locks behind.
    runOn(view->path());
    const ShellResult result = shell->run(
        nameSpace.isEmpty() ? useContextArguments(context) : setNamespaceArguments(nameSpace), false);
    if (!result.hasSucceeded()) {
        return result.failure();
    }
    runOn(view->inFrontOf(files)); // as children will
    return readBack();
}

void KubeCtl::Change::runOn(const QString &kubeConfig) const
{
    child_environment::setKubeConfig(shell->environment, kubeConfig);
}

bool KubeCtl::Change::take() const
{
    if (place->changes != number) {
        return false;
    }
    place->contents = contents;
    place->view = view;
    place->problem.clear();
    return true;
}

std::shared_ptr<Shell> KubeCtl::useContext(const QString &name, ContextUsed completion) const
{
    if (name.isEmpty()) {
        return nullptr;
    }
    auto shell = makePlainShell();
    Change change{m_place, shell, kubeConfigFiles(configPath), name};
    shellQueue().post([change, name, completion = std::move(completion)]() mutable {
        const QString failure = change.perform();
        if (!failure.isEmpty()) {
            if (!change.shell->isCancelled()) {
                reportNotLoaded(QLatin1String("Context ") + name, failure);
            }
            completion(false);
            return;
        }
        mainQueue().post([change, name, completion] {
            const bool isTaken = change.take();
            if (isTaken) {
                applicationRecord().appContext = name;
            }
            completion(isTaken);
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
    if (name.isEmpty()) {
        mainQueue().post([completion] {
            if (completion) {
                completion(false);
            }
        });
        return nullptr;
    }
    auto shell = makePlainShell();
    shell->niceness = 5; // the visible table's listing starts at the same moment and comes first
    const QString context = m_place->view ? m_place->view->context() : QString();
    Change change{m_place, shell, kubeConfigFiles(configPath), context, name};
    shellQueue().post([change, name, record, completion]() mutable {
        const QString failure = change.perform();
        if (!failure.isEmpty() && !change.shell->isCancelled()) {
            reportNotLoaded(QLatin1String("Namespace ") + name, failure);
        }
        mainQueue().post([change, record, completion, success = failure.isEmpty()] {
            if (success && change.take()) {
                record();
            } else if (completion) {
                completion(false);
            }
        });
    });
    return shell;
}

} // namespace tidewright
