// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QStackedWidget;
class QTabBar;

namespace tidewright {

class AdvancedPreferencesViewController;
class GeneralPreferencesViewController;
class PreferencesViewController;

/// The preferences: a window with two panes, made once and kept by the application. Closing only hides it, so
/// that it comes back as it was.
class PreferencesWindowController : public QDialog
{
    Q_OBJECT
public:
    explicit PreferencesWindowController(QWidget *parent = nullptr);

    GeneralPreferencesViewController &generalPane() const { return *m_general; }
    AdvancedPreferencesViewController &advancedPane() const { return *m_advanced; }
    QTabBar *tabBar() const { return m_tabs; }

    /// Brings the window to the front, wherever it was.
    void showWindow();

private:
    void addPane(PreferencesViewController *pane);
    void showPane(int index);

    GeneralPreferencesViewController *m_general;
    AdvancedPreferencesViewController *m_advanced;
    QTabBar *m_tabs;
    QStackedWidget *m_panes;
};

} // namespace tidewright
