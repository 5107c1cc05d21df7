// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/actionmenu/ActionLibrary.h"
#include "app/kubeconfig/UserKubeConfig.h"
#include "app/toolbar/ToolBarLayout.h"
#include "app/window/WebPages.h"

#include <QPointer>

class QDialog;

namespace tidewright {

class ClusterWindowFrame;
class MainWindowController;
class PreferencesWindowController;

/// The application object: prepares the process, opens cluster windows, knows which of them is the main one,
/// and ends what is left when the application ends. One per process, in main().
class AppDelegate : public QObject
{
    Q_OBJECT
public:
    AppDelegate();
    ~AppDelegate() override;

    /// Prepares what windows need: finds the packaged kubectl, makes the cache directory, and has the Python
    /// interpreter loaded beside whatever comes next. Returns what is missing, as a sentence for the user, or
    /// the empty text.
    QString startUp();
    /// Opens the first window.
    void applicationDidFinishLaunching();
    /// Brings every window back when the application has none that can be seen.
    void applicationShouldHandleReopen(bool hasVisibleWindows);
    /// Brings the windows forward, as launchers ask, and those that cannot be seen too. Without a cluster
    /// window opens one.
    void comeForward();
    /// The program was started once more with that list in KUBECONFIG, absolute paths (empty: none). Comes
    /// forward when that is what windows here use anyway, and otherwise shows a window on it: the one that is
    /// there, or a new one.
    void startedAgain(const QString &kubeConfig);
    /// Saves the window's frame and ends the event loop. Nothing is ever left to save, so nobody is asked.
    void quit();
    /// Closes the windows, ends all children and removes the preview files, without waiting for anything
    /// else.
    void applicationWillTerminate();

    /// The first controller of each top-level window opened, in that order; those that were closed are null.
    const QList<QPointer<MainWindowController>> &windowControllers() const { return m_windowControllers; }
    /// The top-level window that the user last worked in; null when there is none.
    ClusterWindowFrame *mainWindow() const;

    void newDocument();
    void showAbout();
    void showPreferences();
    /// Opens a page in the user's browser; nothing happens when there is no such page.
    void openWebPage(WebPage page);
    ActionLibrary &actions() { return m_actions; }
    /// The preferences window; null before its first use.
    PreferencesWindowController *preferencesController() const;

private:
    QString createCacheDirectory();
    void checkKubectl();
    void openWindow(const QString &kubeConfig);
    MainWindowController *pageOn(const QString &kubeConfig) const;
    QList<ClusterWindowFrame *> frames() const;

    const WebPages m_webPages;
    UserKubeConfig m_userFile;
    ActionLibrary m_actions;
    ToolBarLayout m_toolBarLayout;
    QList<QPointer<MainWindowController>> m_windowControllers;
    QList<QPointer<ClusterWindowFrame>> m_frames; ///< the one the user last worked in comes last
    QPointer<QDialog> m_aboutController;
    QPointer<PreferencesWindowController> m_preferencesController;
};

} // namespace tidewright
