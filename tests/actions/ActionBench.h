// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "actions/ActionFolders.h"
#include "core/running/ApplicationRecord.h"
#include "platform/desktop/Notifications.h"
#include "platform/settings/UserDefaults.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/Confirmation.h"
#include "support/OpenQuestion.h"
#include "support/TestFolder.h"
#include "support/TestSupport.h"

#include <QPlainTextEdit>

namespace tidewright::test {

/// Notes also what runs, each time it changes, and the commands as they would be copied.
class RunsConsole : public RecordingConsole
{
public:
    void updateScriptState() override { states.append(scriptsRunning().join(u',')); }
    void addCommandEntry(const CommandLine &line, const QString &command, const QString &response,
        const std::optional<ConsoleError> &error) override
    {
        shellLines.append(line.shellLine());
        addEntry(command, response, error);
    }
    QStringList states;
    QStringList shellLines;
};

/// A main window with a console, folders and settings of its own, and no notification service.
class ActionBench : public TestFolder
{
public:
    ActionBench()
        : settings(path(QStringLiteral("settings.json")))
    {
        mainQueue();
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere");
        qputenv("XDG_DATA_HOME", path().toUtf8());
        setUserDefaultsForTesting(&settings);
        setMainConsoleLookup([this] { return &console; });
        setMainWindowLookup([this] { return &window; });
        setNotificationFallback(
            [this](const QString &title, const QString &text) { notifications.append(title + u'|' + text); });
        window.show();
    }
    ~ActionBench()
    {
        setNotificationFallback({});
        setMainWindowLookup({});
        setMainConsoleLookup({});
        setUserDefaultsForTesting(nullptr);
    }

    /// The action in a folder of that name, with the file names and contents given.
    std::shared_ptr<CustomActionItem> action(
        const QString &title, const QByteArray &config, const char *main, const QByteArray &script) const
    {
        write(title + u'/' + QLatin1String(main), script);
        if (!config.isEmpty()) {
            write(title + QStringLiteral("/config.json"), config);
        }
        const ActionTree tree = loadActionFolders({path(title)});
        return tree.nodes.empty() ? nullptr : tree.nodes.front().item;
    }

    OpenQuestion dialog() const { return OpenQuestion::over(window); }
    /// "title|message|first button,second button" of the open question; empty when there is none.
    QString question() const
    {
        const OpenQuestion open = dialog();
        if (!open) {
            return {};
        }
        QStringList buttons;
        for (const QPushButton *button : open.buttons()) {
            buttons.append(button->text());
        }
        return open.title() + u'|' + open.message() + u'|' + buttons.join(u',');
    }
    void press(const QString &button) const { dialog().press(button); }

    /// Whether all runs that were begun have ended.
    bool isIdle() const { return console.states.size() >= 2 && console.scriptsRunning().isEmpty(); }

    UserDefaults settings;
    RunsConsole console;
    QWidget window;
    QStringList notifications;
};

} // namespace tidewright::test
