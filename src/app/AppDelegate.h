// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/KubeConfigWriter.h"

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

    /// What must be there before a window opens: the packaged kubectl and the cache directory. Returns what
    /// is missing, as a sentence for the user, or the empty text.
    QString startUp();
    /// Opens the first window.
    void applicationDidFinishLaunching();
    /// Brings every window back when the application has none that can be seen.
    void applicationShouldHandleReopen(bool hasVisibleWindows);
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
    /// The preferences window; null before its first use.
    PreferencesWindowController *preferencesController() const;

private:
    QString createCacheDirectory();
    QList<ClusterWindowFrame *> frames() const;

    KubeConfigWriter m_writer;
    QList<QPointer<MainWindowController>> m_windowControllers;
    QList<QPointer<ClusterWindowFrame>> m_frames; ///< the one the user last worked in comes last
    QPointer<QDialog> m_aboutController;
    QPointer<PreferencesWindowController> m_preferencesController;
};

} // namespace tidewright
