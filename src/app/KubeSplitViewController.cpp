// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/KubeSplitViewController.h"

#include "app/ClusterWindowFrame.h"
#include "app/KubeConfigWriter.h"
#include "core/ApplicationRecord.h"
#include "external/EditFile.h"
#include "platform/MainQueue.h"
#include "pods/CombinedLogsViewController.h"
#include "pods/CombinedLogsWindowController.h"
#include "resources/LoadProblem.h"

#include <utility>

namespace tidewright {

namespace {

const auto lastNamespacesKey = QStringLiteral("lastNamespaces");

void cancel(std::shared_ptr<Shell> &shell)
{
    if (shell) {
        shell->cancel();
        shell.reset();
    }
}

} // namespace

KubeSplitViewController::KubeSplitViewController(KubeConfigWriter &writer, QObject *parent)
    : WindowState(parent)
    , m_writer(writer)
    , m_lastNamespaceForContext(
          userDefaults().dictionary(lastNamespacesKey).value_or(UserDefaults::Dictionary()))
{
    connect(this, &KubeSplitViewController::contextListChanged, this, &WindowState::loadingHintChanged);
    connect(this, &KubeSplitViewController::namespaceListChanged, this, &WindowState::loadingHintChanged);
}

KubeSplitViewController::~KubeSplitViewController()
{
    cancel(m_contextShell);
    cancel(m_namespaceShell);
    for (const auto &weak : m_edits) {
        if (const auto edit = weak.lock()) {
            edit->cancel();
        }
    }
}

void KubeSplitViewController::viewWillAppear(const QString &kubeConfigPath)
{
    m_kubeCtl.configPath = kubeConfigPath;
    reloadContexts();
}

void KubeSplitViewController::reloadContexts()
{
    cancel(m_contextShell);
    const quint64 request = ++m_contextRequest;
    m_contextList = {.loading = true};
    m_hint = tr("Loading contexts…");
    m_waitingSince = QDateTime::currentDateTime();
    Q_EMIT contextListChanged();
    const QPointer<KubeSplitViewController> self(this);
    const QByteArray before = KubeConfigWriter::fileState(m_kubeCtl.configPath);
    m_contextShell = m_kubeCtl.loadContexts(
        [self, request, before](const QStringList &contexts, const QString &current) {
            postToMain(self, [=](KubeSplitViewController &window) {
                window.m_writer.observe(window.m_kubeCtl.configPath, before, current);
                window.contextsLoaded(request, contexts, current);
            });
        },
        [self, request](const QString &reason) {
            postToMain(
                self, [=](KubeSplitViewController &window) { window.contextsMissing(request, reason); });
        });
}

void KubeSplitViewController::contextsLoaded(
    quint64 request, const QStringList &contexts, const QString &current)
{
    if (request != m_contextRequest) {
        return;
    }
    m_contextShell.reset();
    // The tables go on showing the context that the window had until now.
    m_choosingContext |= !m_currentContext.isEmpty() && current != m_currentContext;
    m_contextList = {
        .entries = contexts, .selected = contexts.contains(current) ? current : QString(), .enabled = true};
    if (m_choosingContext) {
        Q_EMIT contextLeft();
    }
    m_currentContext = current;
    m_hint = current.isEmpty() ? tr("Choose a context.") : QString();
    Q_EMIT contextListChanged();
    if (current.isEmpty()) { // kubectl would ask whatever listens on this machine
        forgetNamespaces();
    } else {
        reloadNamespaces();
    }
}

void KubeSplitViewController::forgetNamespaces()
{
    cancel(m_namespaceShell);
    ++m_namespaceRequest;
    m_waitingSince = QDateTime();
    m_namespaceList = {};
    Q_EMIT namespaceListChanged();
}

void KubeSplitViewController::contextsMissing(quint64 request, const QString &reason)
{
    if (request != m_contextRequest) {
        return;
    }
    m_contextShell.reset();
    m_waitingSince = QDateTime();
    m_hint = tr("No contexts could be loaded.") + QLatin1Char('\n') + sentenceFirst(reason);
    Q_EMIT contextListChanged();
}

void KubeSplitViewController::reloadNamespaces()
{
    cancel(m_namespaceShell);
    const quint64 request = ++m_namespaceRequest;
    m_namespaceList = {.loading = true};
    m_hint = tr("Loading namespaces…");
    m_namespaceError.clear();
    m_waitingSince = QDateTime::currentDateTime();
    Q_EMIT namespaceListChanged();
    // What is asked is the cluster of the kubeconfig's current context: that must be the window's.
    m_writer.enqueue(this, [this, request](const KubeConfigWriter::Finished &finished) {
        if (request != m_namespaceRequest || m_writer.hasContext(m_kubeCtl.configPath, m_currentContext)) {
            loadNamespaces(request);
            finished();
            return;
        }
        m_writer.useContext(m_kubeCtl, m_currentContext,
            [self = QPointer<KubeSplitViewController>(this), request, finished](bool success) {
                if (self && success) {
                    self->loadNamespaces(request);
                } else if (self) {
                    self->namespacesOutOfReach(request);
                }
                finished();
            });
    });
}

void KubeSplitViewController::loadNamespaces(quint64 request)
{
    if (request != m_namespaceRequest) {
        return;
    }
    m_stillness = m_writer.keepStill();
    const QPointer<KubeSplitViewController> self(this);
    m_namespaceShell = m_kubeCtl.loadNamespaces(
        [self, request](const QStringList &namespaces) {
            postToMain(
                self, [=](KubeSplitViewController &window) { window.namespacesLoaded(request, namespaces); });
        },
        [self](const QString &error) {
            postToMain(self, [error](KubeSplitViewController &window) { window.m_namespaceError = error; });
        });
}

void KubeSplitViewController::namespacesLoaded(quint64 request, const QStringList &namespaces)
{
    if (request != m_namespaceRequest) {
        return;
    }
    m_namespaceShell.reset();
    m_stillness.reset();
    m_waitingSince = QDateTime();
    m_hint = tr("The namespaces could not be loaded.") + QLatin1Char('\n') + sentenceFirst(m_namespaceError);
    m_choosingContext = false;
    m_namespaceList = {.entries = namespaces};
    const QString remembered = m_lastNamespaceForContext.value(m_currentContext);
    if (!namespaces.isEmpty()) {
        const bool isThere = remembered == allNamespaces || namespaces.contains(remembered);
        m_namespaceList.selected = isThere ? remembered : namespaces.first();
        chooseNamespace(m_namespaceList.selected);
    } else {
        postConsoleEntry(m_console, QString(), QString(),
            makeConsoleError(QStringLiteral(
                "No namespaces could be found.  Please ensure you have a valid connection to the "
                "server and then select the menu item `Cluster: Reload Namespace`.")));
        Q_EMIT clusterSettingsChanged();
    }
    enableNamespaces();
}

void KubeSplitViewController::namespacesOutOfReach(quint64 request)
{
    if (m_choosingContext) {
        contextUsed(m_currentContext, false);
        return;
    }
    m_namespaceError = tr("The kubeconfig could not be switched to the context %1.").arg(m_currentContext);
    namespacesLoaded(request, {});
}

void KubeSplitViewController::enableNamespaces()
{
    m_namespaceList.enabled = true;
    Q_EMIT namespaceListChanged();
}

void KubeSplitViewController::chooseNamespace(const QString &name)
{
    // Other windows, and other instances, remember theirs there too.
    m_lastNamespaceForContext
        = userDefaults().dictionary(lastNamespacesKey).value_or(UserDefaults::Dictionary());
    m_lastNamespaceForContext.insert(m_currentContext, name);
    userDefaults().set(lastNamespacesKey, m_lastNamespaceForContext);
    m_currentNamespace = name;
    m_namespaceList.selected = name;
    Q_EMIT namespaceChosen(name);
    m_writer.enqueue(
        this, [this, name, context = m_currentContext](const KubeConfigWriter::Finished &finished) {
            const bool isOutdated = name != m_currentNamespace || context != m_currentContext;
            if (isOutdated || m_choosingContext) {
                finished();
            } else if (m_writer.hasContext(m_kubeCtl.configPath, context)) {
                m_writer.setNamespace(m_kubeCtl, name, [finished](bool) { finished(); });
            } else if (m_console && mainConsole() == m_console) {
                applyContext(finished);
            } else {
                // It would change the namespace of another context; it is made up for when this window
                // comes to the front.
                finished();
            }
        });
    Q_EMIT clusterSettingsChanged();
}

void KubeSplitViewController::chooseContext(const QString &name)
{
    if (name == m_currentContext) {
        return;
    }
    m_currentContext = name;
    m_contextList.selected = name;
    m_hint = tr("Switching to the context %1…").arg(name);
    m_waitingSince = QDateTime();
    Q_EMIT contextListChanged();
    Q_EMIT contextLeft(); // its rows must not be taken for those of the new context
    cancel(m_namespaceShell);
    ++m_namespaceRequest;
    m_choosingContext = true;
    m_namespaceList.enabled = false;
    Q_EMIT namespaceListChanged();
    switchContext(name);
}

void KubeSplitViewController::switchContext(const QString &name)
{
    m_writer.enqueue(this, [this, name](const KubeConfigWriter::Finished &finished) {
        if (name != m_currentContext) {
            finished();
            return;
        }
        m_writer.useContext(
            m_kubeCtl, name, [self = QPointer<KubeSplitViewController>(this), name, finished](bool success) {
                if (self) {
                    self->contextUsed(name, success);
                }
                finished();
            });
    });
}

void KubeSplitViewController::contextUsed(const QString &name, bool success)
{
    if (name != m_currentContext || !m_choosingContext) {
        return;
    }
    if (success) {
        reloadNamespaces();
        return;
    }
    m_namespaceList.loading = false;
    m_hint = tr("The context %1 could not be switched to.").arg(name) + QLatin1Char('\n')
        + tr("The console says why. Reload tries again.");
    enableNamespaces();
}

QString KubeSplitViewController::loadingHint() const
{
    return m_choosingContext || m_currentContext.isEmpty() || m_currentNamespace.isEmpty() ? m_hint
                                                                                           : QString();
}

void KubeSplitViewController::retryLoading()
{
    if (m_contextList.entries.isEmpty()) {
        reloadContexts();
    } else if (m_choosingContext && !m_namespaceShell) {
        switchContext(m_currentContext);
    } else if (!m_currentContext.isEmpty()) {
        reloadNamespaces();
    }
}

void KubeSplitViewController::stopWaiting()
{
    if (m_contextShell) {
        cancel(m_contextShell);
        contextsMissing(m_contextRequest, tr("Loading was stopped."));
    }
    if (m_namespaceShell) {
        m_namespaceShell->cancel(); // answers with nothing
    } else if (m_namespaceList.loading) { // waits for its turn
        m_namespaceError = tr("Loading was stopped.");
        namespacesLoaded(++m_namespaceRequest, {});
    }
}

void KubeSplitViewController::openLogs(const std::vector<ContainerPair> &containers)
{
    auto *window = new CombinedLogsWindowController; // its own from now on: it goes when the user closes it
    CombinedLogsViewController &content = window->contentController();
    content.containers = containers;
    content.kubeConfigPath = m_kubeCtl.configPath;
    content.context = m_currentContext;
    content.nameSpace = m_currentNamespace;
    bringToFront(*window);
}

void KubeSplitViewController::windowDidBecomeMain()
{
    m_writer.enqueue(this, [this](const KubeConfigWriter::Finished &finished) {
        if (m_currentContext.isEmpty()) {
            finished();
        } else if (applicationRecord().appContext != m_currentContext) {
            applyContext(finished);
        } else if (applicationRecord().appNamespace != m_currentNamespace) {
            applyNamespace(finished);
        } else {
            finished();
        }
    });
}

void KubeSplitViewController::applyContext(const std::function<void()> &finished)
{
    m_writer.useContext(m_kubeCtl, m_currentContext,
        [self = QPointer<KubeSplitViewController>(this), name = m_currentContext, finished](bool success) {
            if (!success || !self || self->m_currentContext != name) {
                finished();
            } else if (self->m_choosingContext && !self->m_namespaceShell) {
                self->contextUsed(name, true); // what failed before
                finished();
            } else {
                self->applyNamespace(finished);
            }
        });
}

void KubeSplitViewController::applyNamespace(const std::function<void()> &finished)
{
    // Until the namespaces of a new context are known, the window's namespace belongs to another one.
    if (m_choosingContext || m_currentNamespace.isEmpty()) {
        finished();
        return;
    }
    m_writer.setNamespace(m_kubeCtl, m_currentNamespace, [finished](bool) { finished(); });
}

void KubeSplitViewController::agreeWithKubeConfig(std::function<void(bool)> completion)
{
    m_awaitingAgreement.push_back(std::move(completion));
    if (m_awaitingAgreement.size() > 1) {
        return;
    }
    m_writer.enqueue(this, [this](const KubeConfigWriter::Finished &finished) {
        const auto answer = [self = QPointer<KubeSplitViewController>(this), finished] {
            if (self) {
                self->answerAgreement();
            }
            finished();
        };
        if (!obstacle().isEmpty() || kubeConfigAgrees()) {
            answer();
        } else if (kubeConfigHasContext()) {
            applyNamespace(answer);
        } else {
            applyContext(answer);
        }
    });
}

void KubeSplitViewController::answerAgreement()
{
    const QString reason = obstacle();
    const bool agreed = reason.isEmpty() && kubeConfigAgrees();
    if (agreed) {
        m_agreedStillness = m_writer.keepStill();
    } else {
        postConsoleEntry(m_console, QString(), QString(),
            makeConsoleError(QLatin1String("The command was not run. ")
                + (reason.isEmpty()
                        ? QStringLiteral("The kubeconfig could not be switched to the context and "
                                         "namespace of this window.")
                        : reason)));
    }
    for (const auto &completion : std::exchange(m_awaitingAgreement, {})) {
        completion(agreed);
    }
}

bool KubeSplitViewController::kubeConfigHasContext() const
{
    return applicationRecord().appContext == m_currentContext
        && m_writer.hasContext(m_kubeCtl.configPath, m_currentContext);
}

bool KubeSplitViewController::kubeConfigAgrees() const
{
    return kubeConfigHasContext() && applicationRecord().appNamespace == m_currentNamespace
        && m_writer.hasNamespace(m_kubeCtl.configPath, m_currentContext, m_currentNamespace);
}

QString KubeSplitViewController::obstacle() const
{
    if (m_choosingContext) {
        return QStringLiteral(
            "The window is switching to the context %1; its tables do not show that context yet.")
            .arg(m_currentContext);
    }
    if (m_currentContext.isEmpty() || m_currentNamespace.isEmpty()) {
        return QStringLiteral("No context and namespace are chosen yet.");
    }
    return {};
}

void KubeSplitViewController::startExternalEdit(const QStringList &arguments, std::function<void()> finished)
{
    agreeWithKubeConfig([this, arguments, finished = std::move(finished), context = m_currentContext,
                            nameSpace = m_currentNamespace](bool agreed) {
        if (agreed && context == m_currentContext && nameSpace == m_currentNamespace) {
            editNow(arguments, finished);
            return;
        }
        if (agreed) {
            postConsoleEntry(m_console, QString(), QString(),
                makeConsoleError(QStringLiteral(
                    "Nothing was edited: the window shows another context or namespace by now.")));
        }
        finished();
    });
}

void KubeSplitViewController::editNow(const QStringList &arguments, std::function<void()> finished)
{
    std::erase_if(m_edits, [](const auto &edit) { return edit.expired(); });
    const auto edit = std::make_shared<EditFile>(qobject_cast<QWidget *>(parent()), m_kubeCtl.configPath);
    edit->showPreferences = [self = QPointer(this)] {
        if (self) {
            Q_EMIT self->preferencesRequested();
        }
    };
    m_edits.push_back(edit);
    edit->runAsync(arguments, true, m_console,
        [finished = std::move(finished), console = m_console](const ShellResult &result) {
            // Every other outcome has its entry.
            if (result.error && result.error->startsWith(QLatin1String("Unexpected error: "))) {
                mainQueue().post([console, error = *result.error] {
                    postConsoleEntry(console, QString(), QString(), makeConsoleError(error));
                });
            }
            mainQueue().post(finished);
        });
}

} // namespace tidewright
