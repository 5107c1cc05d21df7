// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kubeconfig/UserKubeConfig.h"

#include "app/kubeconfig/KubeConfigBackup.h"
#include "core/running/ApplicationRecord.h"
#include "core/running/ChildEnvironment.h"
#include "core/running/Shell.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"

#include <QTimer>

namespace tidewright {

namespace {

const auto settingKey = QStringLiteral("kubeconfigFollows");
const auto windowWord = QStringLiteral("window");
const auto nothingWord = QStringLiteral("nothing");
const auto setInVain = QStringLiteral("kubectl ended well, but what it was to set is not there.");
constexpr auto longestChange = std::chrono::seconds(20);
constexpr auto longestEnd = std::chrono::seconds(5);

/// kubectl gives up before it writes when somebody else is writing, or was killed while it did.
bool wasLocked(const ShellResult &result)
{
    return result.error && result.error->contains(QLatin1String(".lock"));
}

/// Runs one kubectl that changes the file, and reads what has become of it. Returns why it was not done; what
/// that kubectl has spoilt is put back then.
QString changeFile(Shell &shell, const QStringList &arguments, const QString &context,
    const KubeConfigBackup &backup, const std::function<bool(const KubeConfigContents &)> &isDone)
{
    const ShellResult result = shell.run(arguments, false);
    QString failure;
    const auto now = readKubeConfig(shell, failure);
    if (now && result.hasSucceeded() && now->hasContext(context)) {
        return isDone(*now) ? QString() : setInVain;
    }
    if (wasLocked(result)) {
        return *result.error
            + QStringLiteral(
                "\nIf no other program is writing the kubeconfig, remove the file that ends in .lock.");
    }
    if (const auto process = shell.process()) {
        process->waitUntilExit(longestEnd); // one that was told to end may be writing yet
    }
    const QString lost = backup.restore();
    failure = !result.hasSucceeded() ? result.failure() : now ? setInVain : failure;
    return lost.isEmpty() ? failure : QString(failure + QLatin1Char('\n') + lost);
}

} // namespace

UserKubeConfig::Follows UserKubeConfig::preference()
{
    const QString word = userDefaults().string(settingKey).value_or(QString());
    return word == windowWord ? Follows::WindowInFront
        : word == nothingWord ? Follows::Nothing
                              : Follows::Choice;
}

void UserKubeConfig::setPreference(Follows follows)
{
    switch (follows) {
    case Follows::WindowInFront:
        return userDefaults().set(settingKey, windowWord);
    case Follows::Nothing:
        return userDefaults().set(settingKey, nothingWord);
    case Follows::Choice:
        return userDefaults().set(settingKey, QStringLiteral("choice"));
    }
}

void UserKubeConfig::contextChosen(const QString &configPath, const QString &context)
{
    if (preference() != Follows::Nothing) {
        enqueue({kubeConfigFiles(configPath), context, QString(), true});
    }
}

void UserKubeConfig::namespaceChosen(
    const QString &configPath, const QString &context, const QString &nameSpace)
{
    if (preference() != Follows::Nothing) {
        enqueue({kubeConfigFiles(configPath), context, nameSpace, false});
    }
}

void UserKubeConfig::windowInFront(
    const QString &configPath, const QString &context, const QString &nameSpace)
{
    if (preference() == Follows::WindowInFront) {
        enqueue({kubeConfigFiles(configPath), context, nameSpace, true});
    }
}

void UserKubeConfig::enqueue(Change change)
{
    m_waiting.push_back(std::move(change));
    if (!m_busy) {
        runNext();
    }
}

void UserKubeConfig::runNext()
{
    m_busy = !m_waiting.empty();
    if (!m_busy) {
        Q_EMIT settled();
        return;
    }
    const Change change = std::move(m_waiting.front());
    m_waiting.pop_front();
    const std::shared_ptr<Shell> shell = Shell::create();
    shell->outlivesApplication = true; // a kubectl that is killed leaves its lock, or half a file
    child_environment::setKubeConfig(shell->environment, change.files);
    const auto through = std::make_shared<std::promise<void>>();
    m_running = through->get_future();
    QTimer::singleShot(longestChange, this, [weak = std::weak_ptr(shell)] {
        if (const auto hanging = weak.lock()) {
            hanging->cancel();
        }
    });
    shellQueue().post([self = QPointer(this), change, shell, through] {
        const QString failure = perform(change, shell);
        through->set_value();
        postToMain(self, [change, failure](UserKubeConfig &owner) {
            if (failure.isEmpty() && change.switches) {
                applicationRecord() = {change.context, change.nameSpace};
            } else if (!failure.isEmpty()) {
                postConsoleEntry(nullptr, QString(),
                    tr("Note: your own kubeconfig was left as it was, and other programs do not follow this "
                       "window. %1")
                        .arg(failure),
                    std::nullopt);
            }
            owner.runNext();
        });
    });
}

/// Returns why the file does not follow; empty when it does, or need not.
QString UserKubeConfig::perform(const Change &change, const std::shared_ptr<Shell> &shell)
{
    QString failure;
    const QString lost = KubeConfigBackup::recover(
        change.files, [&] { return readKubeConfig(*shell, failure).has_value(); });
    if (!lost.isEmpty()) {
        return lost;
    }
    const auto before = readKubeConfig(*shell, failure);
    if (!before) {
        return failure;
    }
    const bool switches = change.switches && before->current != change.context;
    const bool sets = !change.nameSpace.isEmpty() && change.nameSpace != allNamespaces
        && (change.switches || before->current == change.context)
        && before->nameSpace(change.context) != change.nameSpace;
    if (!switches && !sets) {
        return {};
    }
    const KubeConfigBackup backup(change.files);
    if (!backup.problem().isEmpty()) {
        return backup.problem();
    }
    const auto isCurrent = [&change](const KubeConfigContents &now) { return now.current == change.context; };
    if (switches) {
        failure = changeFile(*shell, useContextArguments(change.context), change.context, backup, isCurrent);
    }
    if (failure.isEmpty() && sets) {
        failure = changeFile(*shell, setNamespaceArguments(change.nameSpace), change.context, backup,
            [&](const KubeConfigContents &now) {
                return !isCurrent(now) || now.nameSpace(change.context) == change.nameSpace;
            });
    }
    return failure;
}

void UserKubeConfig::finish(std::chrono::milliseconds limit) const
{
    if (m_busy) {
        m_running.wait_for(limit);
    }
}

} // namespace tidewright
