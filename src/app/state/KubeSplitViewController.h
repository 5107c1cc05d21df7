// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/kubeconfig/LoginCommands.h"
#include "app/state/AccessReview.h"
#include "app/state/ContextChoice.h"
#include "app/state/ExternalEdits.h"
#include "app/state/NamespaceChoice.h"
#include "app/state/Settling.h"
#include "core/WindowState.h"
#include "platform/settings/UserDefaults.h"

#include <QDateTime>

namespace tidewright {

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

    QString currentContext() const override { return m_shown.context; }
    QString currentNamespace() const override { return m_shown.nameSpace; }
    QString kubeConfigPath() const override { return m_kubeCtl.configPath; }
    KubeCtl &kubeCtl() override { return m_kubeCtl; }
    Console *console() override { return m_console; }
    void whenSettled(std::function<void(const QString &obstacle)> completion) override;
    bool liveUpdates() const override;
    bool mayDo(const Access &access) const override;
    QString loadingHint() const override;
    QDateTime waitingSince() const override { return m_waitingSince; }
    void retryLoading() override;
    void stopWaiting() override;
    void openLogs(const std::vector<ContainerPair> &containers, LogScope scope) override;
    void openShell(const ContainerPair &container) override;
    void startExternalEdit(const QStringList &arguments, std::function<void()> finished) override;

    void setConsole(Console *console) { m_console = console; }
    /// The namespace last chosen in each context, as the settings have it.
    const UserDefaults::Dictionary &lastNamespaceForContext() const { return m_namespaces.lastChosen(); }
    const ChoiceList &contextList() const { return m_contexts.list(); }
    /// The names that the cluster returned; "All Namespaces" is not among them.
    const ChoiceList &namespaceList() const { return m_namespaces.list(); }

    /// Begins to read a kubeconfig for a window that is being built: kubectl does it beside that.
    void readAhead(const QString &kubeConfigPath);
    /// The content is about to appear: takes the window's kubeconfig (empty: kubectl's default) and loads the
    /// contexts.
    void viewWillAppear(const QString &kubeConfigPath);
    /// The user works in this window from now on.
    void windowDidBecomeMain();

    /// To be called while the shown table has its rows: asks what the user may do where the window is, unless
    /// that is known.
    void reviewAccess();

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
    void contextsLoaded(const QString &current, const KubeConfigContents &contents);
    void contextsMissing(const QString &reason);
    void enterContext(const QString &name);
    void forgetNamespaces();
    bool mustAskForLogin();
    void loadNamespaces();
    void contextsAreLoading();
    bool mayBegin() const;
    void beginWithRemembered();
    void namespacesLoaded(const QString &error);
    void takeNamespace(const QString &name);
    void enableNamespaces();
    void switchContext(const QString &name);
    void contextUsed(bool success);
    void displacementChanged();

    UserKubeConfig &m_userFile;
    KubeCtl m_kubeCtl;
    ShownPlace m_shown;
    ContextChoice m_contexts{m_kubeCtl};
    NamespaceChoice m_namespaces{m_kubeCtl};
    PlaceSetting m_place{m_kubeCtl};
    AccessReview m_access{m_kubeCtl};
    Settling m_settling{m_kubeCtl, m_shown, m_place};
    ExternalEdits m_edits{*this};
    login_commands::LoginQuestion m_loginQuestion;
    QPointer<Console> m_console;
    bool m_hasBegun = false; ///< with the remembered namespace, before the list was there
    bool m_userFollows = false; ///< the user's own kubeconfig, once the context is switched
    QString m_hint; ///< why the tables have nothing to load from
    QDateTime m_waitingSince;
};

} // namespace tidewright
