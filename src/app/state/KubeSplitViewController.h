// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/state/ChoiceList.h"
#include "app/state/KubeConfigWatch.h"
#include "core/WindowState.h"
#include "platform/settings/UserDefaults.h"

#include <QDateTime>
#include <QStringList>
#include <QTimer>

namespace tidewright {

class EditFile;
class UserKubeConfig;

/// The state of one cluster window: its kubectl, context and namespace, and the lists to choose them from.
/// Whatever arrives for a context that is no longer chosen, or for an older request, is dropped. Owned by the
/// window's controller; letting it go ends its requests and the kubectl runs of its open edits.
class KubeSplitViewController : public WindowState
{
    Q_OBJECT
public:
    /// `userFile` must outlive the state.
    explicit KubeSplitViewController(UserKubeConfig &userFile, QObject *parent = nullptr);
    ~KubeSplitViewController() override;

    QString currentContext() const override { return m_currentContext; }
    QString currentNamespace() const override { return m_currentNamespace; }
    QString kubeConfigPath() const override { return m_kubeCtl.configPath; }
    KubeCtl &kubeCtl() override { return m_kubeCtl; }
    Console *console() override { return m_console; }
    void whenSettled(std::function<void(const QString &obstacle)> completion) override;
    bool liveUpdates() const override;
    QString loadingHint() const override;
    QDateTime waitingSince() const override { return m_waitingSince; }
    void retryLoading() override;
    void stopWaiting() override;
    void openLogs(const std::vector<ContainerPair> &containers, LogScope scope) override;
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
    /// The user works in this window from now on.
    void windowDidBecomeMain();

    /// What the user chooses; the user's own kubeconfig may follow.
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
    void contextsMissing(quint64 request, const QString &reason);
    void enterContext(const QString &name);
    void forgetNamespaces();
    bool mustAskForLogin();
    void loadNamespaces();
    void namespacesLoaded(quint64 request, const QStringList &namespaces);
    QString namespaceToShow(const QStringList &namespaces) const;
    void takeNamespace(const QString &name);
    void setNamespace();
    void enableNamespaces();
    void switchContext(const QString &name);
    void contextUsed(quint64 request, bool success);
    void lookAtKubeConfig();
    void setDisplacement(const QString &sentence);
    void lookedBeforeCommand(const QString &change);
    void answerWaiting();
    bool hasItsPlace() const;
    /// Why nothing can be started that goes by the window's place; empty when it can.
    QString obstacle() const;
    /// The same, as far as it is not the kubeconfig that leads elsewhere.
    QString whyNoPlace() const;
    void editNow(const QStringList &arguments, std::function<void()> finished);

    UserKubeConfig &m_userFile;
    KubeCtl m_kubeCtl;
    KubeConfigWatch m_watch;
    QTimer m_lookTimer;
    QPointer<Console> m_console;
    QString m_currentContext;
    QString m_currentNamespace;
    UserDefaults::Dictionary m_lastNamespaceForContext;
    ChoiceList m_contextList;
    ChoiceList m_namespaceList;
    std::optional<KubeConfigContents> m_contentsRead; ///< while the contexts are being loaded
    quint64 m_contextRequest = 0;
    quint64 m_namespaceRequest = 0;
    quint64 m_placeRequest = 0; ///< of the latest change of context or namespace
    std::shared_ptr<Shell> m_contextShell;
    std::shared_ptr<Shell> m_contentsShell; ///< reads m_contentsRead beside it
    std::shared_ptr<Shell> m_namespaceShell;
    std::shared_ptr<Shell> m_placeShell; ///< while the window's place is being set
    bool m_choosingContext
        = false; // from the choice until its namespaces are known: the tables show the old context
    bool m_userFollows = false; ///< the user's own kubeconfig, once the context is switched
    bool m_isLooking = false; ///< before a command
    QString m_displacement; ///< the kubeconfig leads elsewhere than the tables show: a sentence
    QString m_hint; ///< why the tables have nothing to load from
    QString m_namespaceError;
    std::weak_ptr<bool> m_loginQuestion; ///< alive while it is open
    QDateTime m_waitingSince;
    std::vector<std::function<void(const QString &)>> m_waiting; ///< until the window is settled
    std::vector<std::weak_ptr<EditFile>> m_edits; ///< those under way, and some that have ended
};

} // namespace tidewright
