// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kubeconfig/LoginCommands.h"

#include "core/KubeCtl.h"
#include "core/running/CommandLine.h"
#include "platform/settings/UserDefaults.h"
#include "platform/text/DisplayText.h"
#include "resources/changes/Confirmation.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>

namespace tidewright::login_commands {

namespace {

const auto settingKey = QStringLiteral("allowedLoginCommands");
constexpr QLatin1Char separator(' ');

QStringList allowed()
{
    return userDefaults().string(settingKey).value_or(QString()).split(separator, Qt::SkipEmptyParts);
}

QString hashOf(const QString &files, const QStringList &command)
{
    const QByteArray text = QJsonDocument(QJsonArray::fromStringList(QStringList(files) + command))
                                .toJson(QJsonDocument::Compact);
    return QString::fromLatin1(QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex());
}

void allow(const QString &files, const QList<QStringList> &commands)
{
    QStringList hashes = allowed();
    for (const QStringList &command : commands) {
        hashes.append(hashOf(files, command));
    }
    hashes.removeDuplicates();
    userDefaults().set(settingKey, hashes.join(separator));
}

/// One line, in which nothing passes for another word.
QString lineOf(const QStringList &command)
{
    return display_text::withoutLineEnds(CommandLine{command, {}}.shellLine());
}

} // namespace

QList<QStringList> unseen(const KubeConfigContents &contents, const QString &configPath)
{
    const QString files = kubeConfigFiles(configPath);
    if (contents.loginCommands.isEmpty() || files == kubeConfigFiles({})) {
        return {};
    }
    const QStringList known = allowed();
    QList<QStringList> commands = contents.loginCommands;
    commands.removeIf([&](const QStringList &command) { return known.contains(hashOf(files, command)); });
    return commands;
}

void LoginQuestion::ask(QWidget *view, const QString &configPath, const QList<QStringList> &commands,
    std::function<void()> allowed)
{
    if (const auto isOpen = m_isOpen.lock(); isOpen && *isOpen) {
        return;
    }
    const auto isOpen = std::make_shared<bool>(true);
    m_isOpen = isOpen;
    const QString files = kubeConfigFiles(configPath);
    QStringList lines;
    for (const QStringList &command : commands) {
        lines.append(lineOf(command));
    }
    const QString message = QCoreApplication::translate("LoginCommands",
        "To log in, the kubeconfig\n%1\nhas these programs run on this machine, as you:\n\n%2\n\n"
        "Allow them only when you know who wrote that file.")
                                .arg(display_text::withoutLineEnds(files), lines.join(QLatin1Char('\n')));
    showConfirmation(view,
        {.title = QCoreApplication::translate("LoginCommands", "Run Programs to Log In?"),
            .message = message,
            .yes = QCoreApplication::translate("LoginCommands", "Allow")},
        [files, commands, isOpen, allowed = std::move(allowed)](bool isAllowed) {
            *isOpen = false;
            if (isAllowed) {
                allow(files, commands);
                allowed();
            }
        });
}

} // namespace tidewright::login_commands
