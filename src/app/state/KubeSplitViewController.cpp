// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/KubeSplitViewController.h"

#include "app/kubeconfig/UserKubeConfig.h"
#include "app/state/ContainerShell.h"
#include "app/state/LiveUpdates.h"
#include "pods/logs/view/CombinedLogsViewController.h"
#include "pods/logs/view/CombinedLogsWindowController.h"
#include "resources/listing/LoadProblem.h"
#include "resources/widgets/Windows.h"

#include <utility>

namespace tidewright {

KubeSplitViewController::KubeSplitViewController(UserKubeConfig &userFile, QObject *parent)
    : WindowState(parent)
    , m_userFile(userFile)
{
    using This = KubeSplitViewController;
    connect(&m_contexts, &ContextChoice::loaded, this, &This::contextsLoaded);
    connect(&m_contexts, &ContextChoice::failed, this, &This::contextsMissing);
    connect(&m_namespaces, &NamespaceChoice::loaded, this, &This::namespacesLoaded);
    connect(&m_place, &PlaceSetting::contextUsed, this, &This::contextUsed);
    connect(&m_settling, &Settling::displacementChanged, this, &This::displacementChanged);
    connect(&m_access, &AccessReview::changed, this, &WindowState::accessChanged);
    connect(&m_edits, &ExternalEdits::preferencesRequested, this, &This::preferencesRequested);
    connect(&LiveUpdates::shared(), &LiveUpdates::changed, this, &WindowState::liveUpdatesChanged);
    connect(this, &This::contextListChanged, this, &WindowState::loadingHintChanged);
    connect(this, &This::namespaceListChanged, this, &WindowState::loadingHintChanged);
}

KubeSplitViewController::~KubeSplitViewController() = default;

void KubeSplitViewController::readAhead(const QString &kubeConfigPath)
{
    m_kubeCtl.configPath = kubeConfigPath;
    m_contexts.load();
}

void KubeSplitViewController::viewWillAppear(const QString &kubeConfigPath)
{
    const bool isReadAhead = m_contexts.isLoading() && m_kubeCtl.configPath == kubeConfigPath;
    m_kubeCtl.configPath = kubeConfigPath;
    m_kubeCtl.adopt({}, QString()); // until a context is known, nothing that is started goes anywhere
    if (!isReadAhead) {
        m_contexts.load();
    }
    contextsAreLoading();
}

void KubeSplitViewController::reloadContexts()
{
    m_contexts.load();
    contextsAreLoading();
}

void KubeSplitViewController::contextsAreLoading()
{
    m_hint = tr("Loading contexts…");
    m_waitingSince = QDateTime::currentDateTime();
    Q_EMIT contextListChanged();
}

void KubeSplitViewController::contextsLoaded(const QString &current, const KubeConfigContents &contents)
{
    // The tables go on showing the context that the window had until now.
    const bool leadsElsewhere = current != m_shown.context
        || contents.destination(current) != m_kubeCtl.contents().destination(current);
    m_shown.isBeingChosen |= leadsElsewhere && !m_shown.context.isEmpty();
    m_userFollows = false;
    if (m_shown.isBeingChosen) {
        Q_EMIT contextLeft();
    }
    enterContext(current);
    m_kubeCtl.adopt(contents, current);
    m_hint = current.isEmpty() ? tr("Choose a context.") : QString();
    Q_EMIT contextListChanged();
    if (!current.isEmpty()) {
        loadNamespaces();
        beginWithRemembered();
    } else if (!mustAskForLogin()) { // kubectl would ask whatever listens on this machine
        forgetNamespaces();
    }
}

/// Whatever was being set belongs to another place, and so does what waits for it.
void KubeSplitViewController::enterContext(const QString &name)
{
    m_place.cancel();
    m_access.forget();
    m_shown.context = name;
    m_settling.begin();
}

void KubeSplitViewController::forgetNamespaces()
{
    m_waitingSince = QDateTime();
    m_namespaces.clear();
    Q_EMIT namespaceListChanged();
}

void KubeSplitViewController::contextsMissing(const QString &reason)
{
    m_waitingSince = QDateTime();
    const QString why = reason.isEmpty()
        ? tr("There are none in %1.\nReload looks again; New Tab with Config (File menu) opens another one.")
              .arg(kubeConfigFiles(m_kubeCtl.configPath))
        : sentenceFirst(reason);
    m_hint = tr("No contexts could be loaded.") + QLatin1Char('\n') + why;
    Q_EMIT contextListChanged();
}

void KubeSplitViewController::reloadNamespaces()
{
    if ((m_shown.isBeingChosen && !m_namespaces.isLoading()) || !m_settling.displacement().isEmpty()) {
        retryLoading(); // they come with the context
    } else if (!m_shown.context.isEmpty()) {
        loadNamespaces();
    }
}

/// Whether the user must be asked first, which is done then: the next kubectl would run what the kubeconfig
/// names, unseen.
bool KubeSplitViewController::mustAskForLogin()
{
    const auto commands = login_commands::unseen(m_kubeCtl.contents(), m_kubeCtl.configPath);
    if (commands.isEmpty()) {
        m_kubeCtl.closedBecause.clear();
        return false;
    }
    forgetNamespaces();
    m_shown.isBeingChosen = true;
    m_hint = tr("The kubeconfig has programs run to log in, which you have not allowed.");
    m_kubeCtl.closedBecause = m_hint;
    m_hint += QLatin1Char('\n') + tr("Reload asks again.");
    Q_EMIT contextLeft(); // following the logs of its rows would log in, too
    Q_EMIT loadingHintChanged();
    m_loginQuestion.ask(
        qobject_cast<QWidget *>(parent()), m_kubeCtl.configPath, commands, [self = QPointer(this)] {
            if (self) {
                self->retryLoading();
            }
        });
    return true;
}

void KubeSplitViewController::loadNamespaces()
{
    if (mustAskForLogin()) {
        return;
    }
    m_hint = tr("Loading namespaces…");
    m_waitingSince = QDateTime::currentDateTime();
    m_namespaces.load(mayBegin());
    Q_EMIT namespaceListChanged();
}

/// Live tables need not wait for the list of namespaces: whoever opens a window wants to see pods. A
/// namespace that is gone by now is left when the list says so.
bool KubeSplitViewController::mayBegin() const
{
    return liveUpdates() && !m_shown.isBeingChosen && m_shown.nameSpace.isEmpty()
        && !m_namespaces.remembered(m_shown.context).isEmpty();
}

void KubeSplitViewController::beginWithRemembered()
{
    if (m_namespaces.isLoading() && mayBegin()) {
        m_waitingSince = QDateTime();
        m_hasBegun = true;
        takeNamespace(m_namespaces.remembered(m_shown.context));
    }
}

void KubeSplitViewController::namespacesLoaded(const QString &error)
{
    m_waitingSince = QDateTime();
    m_hint = tr("The namespaces could not be loaded.") + QLatin1Char('\n') + sentenceFirst(error);
    const bool isOfAnotherContext = std::exchange(m_shown.isBeingChosen, false);
    const bool hasBegun = std::exchange(m_hasBegun, false);
    if (!namespaceList().entries.isEmpty() || namespaceList().acceptsOthers) {
        const QString first
            = m_namespaces.firstToShow(m_shown.context, m_kubeCtl.contents().nameSpace(m_shown.context));
        if (hasBegun && !isOfAnotherContext && first == m_shown.nameSpace) {
            m_namespaces.select(first); // and its tables go on
        } else {
            takeNamespace(first);
        }
    } else {
        postConsoleEntry(m_console, QString(), QString(),
            makeConsoleError(QStringLiteral(
                "No namespaces could be found.  Please ensure you have a valid connection to the "
                "server and then select the menu item `Cluster: Reload Namespace`.")));
        if (isOfAnotherContext) {
            m_shown.nameSpace.clear(); // Reload asks for those of this one
            Q_EMIT namespaceChosen(QString());
        }
        Q_EMIT clusterSettingsChanged();
    }
    enableNamespaces();
}

void KubeSplitViewController::enableNamespaces()
{
    m_namespaces.setEnabled(true);
    Q_EMIT namespaceListChanged();
}

void KubeSplitViewController::chooseNamespace(const QString &name)
{
    takeNamespace(name);
    if (!m_shown.context.isEmpty() && !m_shown.isBeingChosen) {
        m_userFile.namespaceChosen(m_kubeCtl.configPath, m_shown.context, name);
    }
}

void KubeSplitViewController::takeNamespace(const QString &name)
{
    if (!m_shown.isBeingChosen && !m_shown.context.isEmpty()) {
        m_namespaces.remember(m_shown.context, name);
    }
    m_shown.nameSpace = name;
    m_namespaces.select(name);
    Q_EMIT namespaceChosen(name);
    if (!m_shown.isBeingChosen) {
        m_place.setNamespace(name); // one that fails is tried again before a command that depends on it
    }
    Q_EMIT clusterSettingsChanged();
}

void KubeSplitViewController::chooseContext(const QString &name)
{
    if (name != m_shown.context || !m_settling.displacement().isEmpty()) {
        m_userFollows = true;
        switchContext(name);
    }
}

void KubeSplitViewController::switchContext(const QString &name)
{
    m_shown.isBeingChosen = true;
    enterContext(name);
    m_contexts.select(name);
    m_hint = tr("Switching to the context %1…").arg(name);
    m_waitingSince = QDateTime();
    m_namespaces.cancel();
    m_namespaces.setEnabled(false);
    Q_EMIT contextListChanged();
    Q_EMIT contextLeft(); // its rows must not be taken for those of the new context
    Q_EMIT namespaceListChanged();
    m_place.useContext(name);
}

void KubeSplitViewController::contextUsed(bool success)
{
    m_settling.answerWaiting();
    if (success) {
        if (std::exchange(m_userFollows, false)) {
            m_userFile.contextChosen(m_kubeCtl.configPath, m_shown.context);
        }
        loadNamespaces();
        return;
    }
    m_namespaces.endLoading();
    m_hint = tr("The context %1 could not be switched to.").arg(m_shown.context) + QLatin1Char('\n')
        + tr("The console says why. Reload tries again; Reload Contexts (Cluster menu) lists those that "
             "there are.");
    enableNamespaces();
}

bool KubeSplitViewController::liveUpdates() const
{
    return LiveUpdates::shared().isOn();
}

void KubeSplitViewController::reviewAccess()
{
    if (loadingHint().isEmpty()) {
        m_access.need(m_shown.context, m_shown.nameSpace);
    }
}

bool KubeSplitViewController::mayDo(const Access &access) const
{
    return m_shown.isBeingChosen || m_access.mayDo(access, m_shown.nameSpace);
}

QString KubeSplitViewController::loadingHint() const
{
    if (!m_settling.displacement().isEmpty()) {
        return m_settling.displacement() + QLatin1Char('\n')
            + tr("Reload shows what is there now; another context can be chosen above.");
    }
    return m_shown.isBeingChosen || m_shown.context.isEmpty() || m_shown.nameSpace.isEmpty() ? m_hint
                                                                                             : QString();
}

void KubeSplitViewController::retryLoading()
{
    if (contextList().entries.isEmpty() || m_shown.context.isEmpty()) {
        reloadContexts();
    } else if (!m_settling.displacement().isEmpty()
        || (m_shown.isBeingChosen && !m_namespaces.isLoading() && !m_place.isUnderWay())) {
        switchContext(m_shown.context);
    } else if (!m_place.isUnderWay()) {
        loadNamespaces();
    }
}

void KubeSplitViewController::stopWaiting()
{
    if (m_contexts.isLoading()) {
        m_contexts.stop(tr("Loading was stopped."));
    }
    m_namespaces.stop();
}

void KubeSplitViewController::openLogs(const std::vector<ContainerPair> &containers, LogScope scope)
{
    auto *window = new CombinedLogsWindowController; // its own from now on: it goes when the user closes it
    CombinedLogsViewController &content = window->contentController();
    (scope == LogScope::AllPods ? content.workloads : content.containers) = containers;
    if (scope == LogScope::Previous) {
        content.options = {.from = LogOptions::From::All, .previous = true};
    }
    const auto view = m_kubeCtl.view();
    content.kubeConfigPath
        = view ? view->inFrontOf(kubeConfigFiles(m_kubeCtl.configPath)) : m_kubeCtl.configPath;
    content.kubeConfigView = view;
    content.context = m_shown.context;
    content.contextKey = {m_kubeCtl.configPath, m_shown.context};
    const QString &first = containers.front().nameSpace;
    const bool haveOne = !first.isEmpty()
        && std::all_of(containers.begin(), containers.end(),
            [&first](const ContainerPair &pair) { return pair.nameSpace == first; });
    content.nameSpace = haveOne ? first : m_shown.nameSpace;
    bringToFront(*window);
}

void KubeSplitViewController::windowDidBecomeMain()
{
    m_settling.look();
    if (!m_shown.context.isEmpty() && !m_shown.isBeingChosen && m_settling.displacement().isEmpty()) {
        m_userFile.windowInFront(m_kubeCtl.configPath, m_shown.context, m_shown.nameSpace);
    }
}

/// What the tables show is not where commands would go; nor is it once that is mended.
void KubeSplitViewController::displacementChanged()
{
    if (m_settling.displacement().isEmpty()) {
        Q_EMIT clusterSettingsChanged();
    } else {
        Q_EMIT contextLeft();
    }
    Q_EMIT loadingHintChanged();
}

void KubeSplitViewController::whenSettled(std::function<void(const QString &)> completion)
{
    m_settling.wait(std::move(completion));
}

void KubeSplitViewController::openShell(const ContainerPair &container)
{
    openContainerShell(*this, container);
}

void KubeSplitViewController::startExternalEdit(const QStringList &arguments, std::function<void()> finished)
{
    m_edits.start(arguments, std::move(finished));
}

} // namespace tidewright
