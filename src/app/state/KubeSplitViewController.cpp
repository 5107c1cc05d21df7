// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/KubeSplitViewController.h"

#include "app/state/LiveUpdates.h"
#include "app/state/LoginCommands.h"
#include "app/state/UserKubeConfig.h"
#include "core/CommandGate.h"
#include "external/EditFile.h"
#include "platform/threads/MainQueue.h"
#include "pods/logs/view/CombinedLogsViewController.h"
#include "pods/logs/view/CombinedLogsWindowController.h"
#include "resources/changes/ClusterChange.h"
#include "resources/listing/LoadProblem.h"
#include "resources/widgets/Windows.h"

#include <utility>

namespace tidewright {

namespace {

const auto lastNamespacesKey = QStringLiteral("lastNamespaces");
constexpr auto lookInterval = std::chrono::seconds(20);

const auto nothingEdited = QStringLiteral("Nothing was edited");

void cancel(std::shared_ptr<Shell> &shell)
{
    if (shell) {
        shell->cancel();
        shell.reset();
    }
}

} // namespace

KubeSplitViewController::KubeSplitViewController(UserKubeConfig &userFile, QObject *parent)
    : WindowState(parent)
    , m_userFile(userFile)
    , m_watch(m_kubeCtl)
    , m_lastNamespaceForContext(
          userDefaults().dictionary(lastNamespacesKey).value_or(UserDefaults::Dictionary()))
{
    connect(&LiveUpdates::shared(), &LiveUpdates::changed, this, &WindowState::liveUpdatesChanged);
    connect(this, &KubeSplitViewController::contextListChanged, this, &WindowState::loadingHintChanged);
    connect(this, &KubeSplitViewController::namespaceListChanged, this, &WindowState::loadingHintChanged);
    m_lookTimer.callOnTimeout(this, &KubeSplitViewController::lookAtKubeConfig);
    m_lookTimer.start(lookInterval);
}

KubeSplitViewController::~KubeSplitViewController()
{
    cancel(m_contextShell);
    cancel(m_contentsShell);
    cancel(m_namespaceShell);
    cancel(m_placeShell);
    for (const auto &weak : m_edits) {
        if (const auto edit = weak.lock()) {
            edit->cancel();
        }
    }
    for (const auto &completion : m_waiting) {
        mainQueue().post([completion] {
            completion(QStringLiteral("its window was closed before it showed the context and namespace."));
        });
    }
}

void KubeSplitViewController::viewWillAppear(const QString &kubeConfigPath)
{
    m_kubeCtl.configPath = kubeConfigPath;
    m_kubeCtl.adopt({}, QString()); // until a context is known, nothing that is started goes anywhere
    reloadContexts();
}

void KubeSplitViewController::reloadContexts()
{
    cancel(m_contextShell);
    cancel(m_contentsShell);
    const quint64 request = ++m_contextRequest;
    m_contextList = {.loading = true};
    m_hint = tr("Loading contexts…");
    m_waitingSince = QDateTime::currentDateTime();
    Q_EMIT contextListChanged();
    // Two readings beside each other: the names in their order, and what they stand for.
    const QPointer<KubeSplitViewController> self(this);
    const auto read = std::make_shared<int>(0);
    const auto loaded = std::make_shared<std::pair<QStringList, QString>>();
    const auto readOne = [self, request, read, loaded] {
        if (self && ++*read == 2) {
            self->contextsLoaded(request, loaded->first, loaded->second);
        }
    };
    m_contextShell = m_kubeCtl.loadContexts(
        [loaded, readOne](const QStringList &contexts, const QString &current) {
            mainQueue().post([=] {
                *loaded = {contexts, current};
                readOne();
            });
        },
        [self, request](const QString &reason) {
            postToMain(
                self, [=](KubeSplitViewController &window) { window.contextsMissing(request, reason); });
        });
    m_contentsShell = m_kubeCtl.readKubeConfig(
        [self, request, readOne](const std::optional<KubeConfigContents> &contents) {
            if (self && request == self->m_contextRequest) {
                self->m_contentsRead = contents;
                readOne();
            }
        });
}

void KubeSplitViewController::contextsLoaded(
    quint64 request, const QStringList &contexts, const QString &current)
{
    if (request != m_contextRequest) {
        return;
    }
    if (!m_contentsRead) {
        contextsMissing(request, tr("kubectl could not read the kubeconfig."));
        return;
    }
    m_contextShell.reset();
    m_contentsShell.reset();
    // The tables go on showing the context that the window had until now.
    const bool leadsElsewhere = current != m_currentContext
        || m_contentsRead->destination(current) != m_kubeCtl.contents().destination(current);
    m_choosingContext |= leadsElsewhere && !m_currentContext.isEmpty();
    m_userFollows = false;
    m_contextList = {
        .entries = contexts, .selected = contexts.contains(current) ? current : QString(), .enabled = true};
    if (m_choosingContext) {
        Q_EMIT contextLeft();
    }
    enterContext(current);
    m_kubeCtl.adopt(*m_contentsRead, current);
    m_hint = current.isEmpty() ? tr("Choose a context.") : QString();
    Q_EMIT contextListChanged();
    if (!current.isEmpty()) {
        loadNamespaces();
    } else if (!mustAskForLogin()) { // kubectl would ask whatever listens on this machine
        forgetNamespaces();
    }
}

/// Whatever was being set belongs to another place, and so does what waits for it.
void KubeSplitViewController::enterContext(const QString &name)
{
    cancel(m_placeShell);
    ++m_placeRequest;
    m_currentContext = name;
    m_displacement.clear();
    m_isLooking = false;
    m_watch.begin();
    answerWaiting();
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
    cancel(m_contentsShell);
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
    if ((m_choosingContext && !m_namespaceShell) || !m_displacement.isEmpty()) {
        retryLoading(); // they come with the context
    } else if (!m_currentContext.isEmpty()) {
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
    m_choosingContext = true;
    m_hint = tr("The kubeconfig has programs run to log in, which you have not allowed.");
    m_kubeCtl.closedBecause = m_hint;
    m_hint += QLatin1Char('\n') + tr("Reload asks again.");
    Q_EMIT contextLeft(); // following the logs of its rows would log in, too
    Q_EMIT loadingHintChanged();
    if (m_loginQuestion.expired()) {
        const auto question = std::make_shared<bool>();
        m_loginQuestion = question;
        login_commands::ask(qobject_cast<QWidget *>(parent()), m_kubeCtl.configPath, commands,
            [self = QPointer(this), question](bool allowed) {
                if (self) {
                    self->m_loginQuestion.reset();
                    if (allowed) {
                        self->retryLoading();
                    }
                }
            });
    }
    return true;
}

void KubeSplitViewController::loadNamespaces()
{
    if (mustAskForLogin()) {
        return;
    }
    cancel(m_namespaceShell);
    const quint64 request = ++m_namespaceRequest;
    m_namespaceList = {.loading = true};
    m_hint = tr("Loading namespaces…");
    m_namespaceError.clear();
    m_waitingSince = QDateTime::currentDateTime();
    Q_EMIT namespaceListChanged();
    const QPointer<KubeSplitViewController> self(this);
    m_namespaceShell = m_kubeCtl.loadNamespaces(
        [self, request](const QStringList &namespaces) {
            postToMain(
                self, [=](KubeSplitViewController &window) { window.namespacesLoaded(request, namespaces); });
        },
        [self, request](const QString &error) {
            postToMain(self, [request, error](KubeSplitViewController &window) {
                if (request == window.m_namespaceRequest) {
                    window.m_namespaceError = error;
                }
            });
        });
}

void KubeSplitViewController::namespacesLoaded(quint64 request, const QStringList &namespaces)
{
    if (request != m_namespaceRequest) {
        return;
    }
    m_namespaceShell.reset();
    m_waitingSince = QDateTime();
    m_hint = tr("The namespaces could not be loaded.") + QLatin1Char('\n') + sentenceFirst(m_namespaceError);
    const bool isOfAnotherContext = std::exchange(m_choosingContext, false);
    m_namespaceList = {.entries = namespaces};
    // Who may not list them may still work in one.
    m_namespaceList.acceptsOthers
        = m_namespaceError.contains(QLatin1String("forbidden"), Qt::CaseInsensitive);
    if (namespaces.isEmpty() && !m_namespaceList.acceptsOthers) {
        postConsoleEntry(m_console, QString(), QString(),
            makeConsoleError(QStringLiteral(
                "No namespaces could be found.  Please ensure you have a valid connection to the "
                "server and then select the menu item `Cluster: Reload Namespace`.")));
    }
    if (!namespaces.isEmpty() || m_namespaceList.acceptsOthers) {
        takeNamespace(namespaceToShow(namespaces));
    } else {
        if (isOfAnotherContext) {
            m_currentNamespace.clear(); // Reload asks for those of this one
            Q_EMIT namespaceChosen(QString());
        }
        Q_EMIT clusterSettingsChanged();
    }
    enableNamespaces();
}

QString KubeSplitViewController::namespaceToShow(const QStringList &namespaces) const
{
    const auto isThere = [&](const QString &name) {
        return !name.isEmpty() && (namespaces.isEmpty() || namespaces.contains(name));
    };
    // Other windows, and other instances, remember theirs there too.
    const auto stored = userDefaults().dictionary(lastNamespacesKey).value_or(UserDefaults::Dictionary());
    const QString remembered = stored.value(m_currentContext);
    const QString own = m_kubeCtl.contents().nameSpace(m_currentContext);
    if (isThere(remembered) || (remembered == allNamespaces && !namespaces.isEmpty())) {
        return remembered;
    }
    return isThere(own) ? own : namespaces.value(0, own);
}

void KubeSplitViewController::enableNamespaces()
{
    m_namespaceList.enabled = true;
    Q_EMIT namespaceListChanged();
}

void KubeSplitViewController::chooseNamespace(const QString &name)
{
    takeNamespace(name);
    if (!m_currentContext.isEmpty() && !m_choosingContext) {
        m_userFile.namespaceChosen(m_kubeCtl.configPath, m_currentContext, name);
    }
}

void KubeSplitViewController::takeNamespace(const QString &name)
{
    if (!m_choosingContext && !m_currentContext.isEmpty()) {
        m_lastNamespaceForContext
            = userDefaults().dictionary(lastNamespacesKey).value_or(UserDefaults::Dictionary());
        m_lastNamespaceForContext.insert(m_currentContext, name);
        userDefaults().set(lastNamespacesKey, m_lastNamespaceForContext);
    }
    m_currentNamespace = name;
    m_namespaceList.selected = name;
    Q_EMIT namespaceChosen(name);
    if (!m_choosingContext) {
        setNamespace();
    }
    Q_EMIT clusterSettingsChanged();
}

/// Only the latest choice counts; one that failed is tried again before a command that depends on it.
void KubeSplitViewController::setNamespace()
{
    cancel(m_placeShell);
    m_placeShell = m_kubeCtl.setNamespace(
        m_currentNamespace, [self = QPointer(this), request = ++m_placeRequest](bool) {
            if (self && request == self->m_placeRequest) {
                self->m_placeShell.reset();
                self->answerWaiting();
            }
        });
}

void KubeSplitViewController::chooseContext(const QString &name)
{
    if (name != m_currentContext || !m_displacement.isEmpty()) {
        m_userFollows = true;
        switchContext(name);
    }
}

void KubeSplitViewController::switchContext(const QString &name)
{
    m_choosingContext = true;
    enterContext(name);
    m_contextList.selected = name;
    m_hint = tr("Switching to the context %1…").arg(name);
    m_waitingSince = QDateTime();
    cancel(m_namespaceShell);
    ++m_namespaceRequest;
    m_namespaceList.enabled = false;
    Q_EMIT contextListChanged();
    Q_EMIT contextLeft(); // its rows must not be taken for those of the new context
    Q_EMIT namespaceListChanged();
    m_kubeCtl.adopt(m_kubeCtl.contents(), QString()); // until then nothing that is started goes anywhere
    m_placeShell = m_kubeCtl.useContext(
        name, [self = QPointer(this), request = ++m_placeRequest](bool success) {
            postToMain(self, [=](KubeSplitViewController &window) { window.contextUsed(request, success); });
        });
}

void KubeSplitViewController::contextUsed(quint64 request, bool success)
{
    if (request != m_placeRequest) {
        return;
    }
    m_placeShell.reset();
    answerWaiting();
    if (success) {
        if (std::exchange(m_userFollows, false)) {
            m_userFile.contextChosen(m_kubeCtl.configPath, m_currentContext);
        }
        loadNamespaces();
        return;
    }
    m_namespaceList.loading = false;
    m_hint = tr("The context %1 could not be switched to.").arg(m_currentContext) + QLatin1Char('\n')
        + tr("The console says why. Reload tries again; Reload Contexts (Cluster menu) lists those that "
             "there are.");
    enableNamespaces();
}

bool KubeSplitViewController::liveUpdates() const
{
    return LiveUpdates::shared().isOn();
}

QString KubeSplitViewController::loadingHint() const
{
    if (!m_displacement.isEmpty()) {
        return m_displacement + QLatin1Char('\n')
            + tr("Reload shows what is there now; another context can be chosen above.");
    }
    return m_choosingContext || m_currentContext.isEmpty() || m_currentNamespace.isEmpty() ? m_hint
                                                                                           : QString();
}

void KubeSplitViewController::retryLoading()
{
    if (m_contextList.entries.isEmpty() || m_currentContext.isEmpty()) {
        reloadContexts();
    } else if (!m_displacement.isEmpty() || (m_choosingContext && !m_namespaceShell && !m_placeShell)) {
        switchContext(m_currentContext);
    } else if (!m_placeShell) {
        loadNamespaces();
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
    }
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
    content.context = m_currentContext;
    content.contextKey = {m_kubeCtl.configPath, m_currentContext};
    const QString &first = containers.front().nameSpace;
    const bool haveOne = !first.isEmpty()
        && std::all_of(containers.begin(), containers.end(),
            [&first](const ContainerPair &pair) { return pair.nameSpace == first; });
    content.nameSpace = haveOne ? first : m_currentNamespace;
    bringToFront(*window);
}

void KubeSplitViewController::windowDidBecomeMain()
{
    lookAtKubeConfig();
    if (!m_currentContext.isEmpty() && !m_choosingContext && m_displacement.isEmpty()) {
        m_userFile.windowInFront(m_kubeCtl.configPath, m_currentContext, m_currentNamespace);
    }
}

void KubeSplitViewController::lookAtKubeConfig()
{
    if (m_currentContext.isEmpty() || m_choosingContext) {
        return;
    }
    m_watch.look([self = QPointer(this)](const QString &change) {
        if (self && !self->m_choosingContext) {
            self->setDisplacement(change);
        }
    });
}

/// What the tables show is not where commands would go; nor is it once that is mended.
void KubeSplitViewController::setDisplacement(const QString &sentence)
{
    if (std::exchange(m_displacement, sentence) == sentence) {
        return;
    }
    if (sentence.isEmpty()) {
        Q_EMIT clusterSettingsChanged();
    } else {
        Q_EMIT contextLeft();
    }
    Q_EMIT loadingHintChanged();
}

void KubeSplitViewController::whenSettled(std::function<void(const QString &)> completion)
{
    m_waiting.push_back(std::move(completion));
    if (m_waiting.size() > 1) {
        return;
    }
    if (!whyNoPlace().isEmpty()) {
        answerWaiting();
        return;
    }
    m_isLooking = true; // also for whether what was wrong with the kubeconfig is mended
    m_watch.look([self = QPointer(this)](const QString &change) {
        if (self) {
            self->lookedBeforeCommand(change);
        }
    });
}

void KubeSplitViewController::lookedBeforeCommand(const QString &change)
{
    if (!std::exchange(m_isLooking, false)) {
        return; // the window is in another place by now
    }
    if (!m_choosingContext) {
        setDisplacement(change);
    }
    if (obstacle().isEmpty() && !m_placeShell && !hasItsPlace()) {
        setNamespace(); // once more
    }
    answerWaiting();
}

void KubeSplitViewController::answerWaiting()
{
    if ((m_placeShell && !m_choosingContext) || m_isLooking) {
        return;
    }
    QString reason = obstacle();
    if (reason.isEmpty() && !hasItsPlace()) {
        reason = QStringLiteral("The window's namespace %1 could not be set.").arg(m_currentNamespace);
    }
    for (const auto &completion : std::exchange(m_waiting, {})) {
        completion(reason);
    }
}

bool KubeSplitViewController::hasItsPlace() const
{
    const auto view = m_kubeCtl.view();
    return view && view->context() == m_currentContext
        && (m_currentNamespace == allNamespaces || view->nameSpace() == m_currentNamespace);
}

QString KubeSplitViewController::obstacle() const
{
    const QString reason = whyNoPlace();
    return reason.isEmpty() ? m_displacement : reason;
}

QString KubeSplitViewController::whyNoPlace() const
{
    if (!m_kubeCtl.closedBecause.isEmpty()) {
        return m_kubeCtl.closedBecause;
    }
    if (m_choosingContext && !m_currentContext.isEmpty()) {
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
    whenSettled(
        [this, arguments, finished = std::move(finished), place = ChangePlace(*this)](const QString &reason) {
            if (!place.window) {
                refuseUnseenChange(place, nothingEdited, reason);
                return;
            }
            if (!reason.isEmpty()) {
                refuseChange(*this, nothingEdited, reason);
            } else if (!place.isStillShown()) {
                refuseMovedChange(*this, nothingEdited);
            } else {
                editNow(arguments, finished);
                return;
            }
            finished();
        });
}

void KubeSplitViewController::editNow(const QStringList &arguments, std::function<void()> finished)
{
    const KubeConfigCopy copy = m_kubeCtl.makeCopy();
    if (!copy.problem.isEmpty()) {
        refuseChange(*this, nothingEdited, copy.problem);
        finished();
        return;
    }
    std::erase_if(m_edits, [](const auto &edit) { return edit.expired(); });
    const auto edit = std::make_shared<EditFile>(qobject_cast<QWidget *>(parent()), copy.kubeConfig);
    edit->showPreferences = [self = QPointer(this)] {
        if (self) {
            Q_EMIT self->preferencesRequested();
        }
    };
    edit->gate
        = [place = m_kubeCtl.startingPlace()](const QStringList &words) { return gateReason(words, place); };
    m_edits.push_back(edit);
    edit->runAsync(arguments, true, m_console,
        [finished = std::move(finished), console = m_console, view = copy.view](const ShellResult &result) {
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
