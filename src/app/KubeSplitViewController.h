// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/UserDefaults.h"
#include "resources/WindowState.h"

#include <QDateTime>
#include <QStringList>

namespace tidewright {

class EditFile;
class KubeConfigWriter;

/// What a cluster window's context list or namespace list shows.
struct ChoiceList
{
    QStringList entries = {};
    QString selected = {}; ///< empty when no entry is
    bool loading = false; ///< "Loading..." stands in place of the entries
    bool enabled = false;
};

/// The state of one cluster window: its kubectl, context and namespace, and the lists to choose them from.
/// Whatever arrives for a context that is no longer chosen, or for an older request, is dropped. Owned by the
/// window's controller; letting it go ends its requests and the kubectl runs of its open edits.
class KubeSplitViewController : public WindowState
{
    Q_OBJECT
public:
    /// `writer` must outlive the state.
    explicit KubeSplitViewController(KubeConfigWriter &writer, QObject *parent = nullptr);
    ~KubeSplitViewController() override;

    QString currentContext() const override { return m_currentContext; }
    QString currentNamespace() const override { return m_currentNamespace; }
    QString kubeConfigPath() const override { return m_kubeCtl.configPath; }
    KubeCtl &kubeCtl() override { return m_kubeCtl; }
    Console *console() override { return m_console; }
    void agreeWithKubeConfig(std::function<void(bool agreed)> completion) override;
    QString loadingHint() const override;
    QDateTime waitingSince() const override { return m_waitingSince; }
    void retryLoading() override;
    void stopWaiting() override;
    void openLogs(const std::vector<ContainerPair> &containers) override;
    bool canEdit() const override { return true; }
    void startExternalEdit(const QStringList &arguments, std::function<void()> finished) override;

    void setConsole(Console *console) { m_console = console; }
    /// The namespace last chosen in each context, as the settings have it.
    const UserDefaults::Dictionary &lastNamespaceForContext() const { return m_lastNamespaceForContext; }
    const ChoiceList &contextList() const { return m_contextList; }
    /// The names that the cluster returned; "All Namespaces" is not among them.
    const ChoiceList &namespaceList() const { return m_namespaceList; }

    /// The content is about to appear: takes the window's kubeconfig (empty: kubectl's default) and loads the
    /// contexts.
    void viewWillAppear(const QString &kubeConfigPath);
    /// Makes the kubeconfig follow this window, now that the user works in it.
    void windowDidBecomeMain();

    void chooseContext(const QString &name);
    void chooseNamespace(const QString &name);
    void reloadContexts();
    void reloadNamespaces();

Q_SIGNALS:
    void contextListChanged();
    void namespaceListChanged();
    /// The window turns to another context; what the tables show is of the old one.
    void contextLeft();
    /// For the window's titles.
    void namespaceChosen(const QString &name);
    /// The tables must be emptied and loaded again.
    void clusterSettingsChanged();
    /// The user wants to choose an editor.
    void preferencesRequested();

private:
    void contextsLoaded(quint64 request, const QStringList &contexts, const QString &current);
    void forgetNamespaces();
    void contextsMissing(quint64 request, const QString &reason);
    void loadNamespaces(quint64 request);
    void namespacesLoaded(quint64 request, const QStringList &namespaces);
    void namespacesOutOfReach(quint64 request);
    void switchContext(const QString &name);
    void contextUsed(const QString &name, bool success);
    void enableNamespaces();
    // Steps of a task in the writer's queue.
    void applyContext(const std::function<void()> &finished);
    void applyNamespace(const std::function<void()> &finished);
    void answerAgreement();
    bool kubeConfigHasContext() const;
    bool kubeConfigAgrees() const;
    /// Why commands that go by the kubeconfig cannot run now; empty when they can.
    QString obstacle() const;
    void editNow(const QStringList &arguments, std::function<void()> finished);

    KubeConfigWriter &m_writer;
    KubeCtl m_kubeCtl;
    QPointer<Console> m_console;
    QString m_currentContext;
    QString m_currentNamespace;
    UserDefaults::Dictionary m_lastNamespaceForContext;
    ChoiceList m_contextList;
    ChoiceList m_namespaceList;
    quint64 m_contextRequest = 0;
    quint64 m_namespaceRequest = 0;
    std::shared_ptr<Shell> m_contextShell;
    std::shared_ptr<Shell> m_namespaceShell;
    std::shared_ptr<void> m_stillness; ///< until the namespaces are there
    std::shared_ptr<void> m_agreedStillness; ///< for the latest command that goes by the kubeconfig
    bool m_choosingContext
        = false; // from the choice until its namespaces are known: the tables show the old context
    QString m_hint; ///< why the tables have nothing to load from
    QString m_namespaceError;
    QDateTime m_waitingSince;
    std::vector<std::function<void(bool)>> m_awaitingAgreement;
    std::vector<std::weak_ptr<EditFile>> m_edits; ///< those under way, and some that have ended
};

} // namespace tidewright
