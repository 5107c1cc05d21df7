// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/KubeSplitViewController.h"

#include "app/KubeConfigWriter.h"
#include "core/ApplicationRecord.h"
#include "platform/MainQueue.h"

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
}

KubeSplitViewController::~KubeSplitViewController()
{
    cancel(m_contextShell);
    cancel(m_namespaceShell);
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
    Q_EMIT contextListChanged();
    m_contextShell = m_kubeCtl.loadContexts([self = QPointer<KubeSplitViewController>(this), request](
                                                const QStringList &contexts, const QString &current) {
        postToMain(self,
            [=](KubeSplitViewController &window) { window.contextsLoaded(request, contexts, current); });
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
    m_currentContext = current;
    Q_EMIT contextListChanged();
    reloadNamespaces();
}

void KubeSplitViewController::reloadNamespaces()
{
    cancel(m_namespaceShell);
    const quint64 request = ++m_namespaceRequest;
    m_namespaceList = {.loading = true};
    Q_EMIT namespaceListChanged();
    m_namespaceShell = m_kubeCtl.loadNamespaces(
        [self = QPointer<KubeSplitViewController>(this), request](const QStringList &namespaces) {
            postToMain(
                self, [=](KubeSplitViewController &window) { window.namespacesLoaded(request, namespaces); });
        });
}

void KubeSplitViewController::namespacesLoaded(quint64 request, const QStringList &namespaces)
{
    if (request != m_namespaceRequest) {
        return;
    }
    m_namespaceShell.reset();
    m_choosingContext = false;
    m_namespaceList = {.entries = namespaces};
    const QString remembered = m_lastNamespaceForContext.value(m_currentContext);
    if (!namespaces.isEmpty()) {
        m_namespaceList.selected = namespaces.contains(remembered) ? remembered : namespaces.first();
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

void KubeSplitViewController::enableNamespaces()
{
    m_namespaceList.enabled = true;
    Q_EMIT namespaceListChanged();
}

void KubeSplitViewController::chooseNamespace(const QString &name)
{
    m_lastNamespaceForContext.insert(m_currentContext, name);
    userDefaults().set(lastNamespacesKey, m_lastNamespaceForContext);
    m_currentNamespace = name;
    m_namespaceList.selected = name;
    Q_EMIT namespaceChosen(name);
    m_writer.enqueue(
        this, [this, name, context = m_currentContext](const KubeConfigWriter::Finished &finished) {
            if (name != m_currentNamespace || context != m_currentContext) {
                finished();
                return;
            }
            m_writer.setNamespace(m_kubeCtl, name, [finished](bool) { finished(); });
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
    Q_EMIT contextListChanged();
    cancel(m_namespaceShell);
    ++m_namespaceRequest;
    m_choosingContext = true;
    m_namespaceList.enabled = false;
    Q_EMIT namespaceListChanged();
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
    enableNamespaces();
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
            if (success && self && self->m_currentContext == name) {
                self->applyNamespace(finished);
            } else {
                finished();
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
        m_writer.keepStill();
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
    return applicationRecord().appContext == m_currentContext && m_writer.isUntouched(m_kubeCtl.configPath);
}

bool KubeSplitViewController::kubeConfigAgrees() const
{
    return kubeConfigHasContext() && applicationRecord().appNamespace == m_currentNamespace;
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

} // namespace tidewright
