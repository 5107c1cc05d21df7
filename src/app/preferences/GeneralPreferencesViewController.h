// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/preferences/PreferencesViewController.h"

class QComboBox;
class QLabel;
class QLineEdit;

namespace tidewright {

class PathHint;

/// Which terminal, editor and kubeconfig the user works with, and what the kubeconfig follows. Every change
/// is in the settings at once.
class GeneralPreferencesViewController : public PreferencesViewController
{
    Q_OBJECT
public:
    explicit GeneralPreferencesViewController(QWidget *parent = nullptr);

    QComboBox *preferredTerminalPopup() const { return m_preferredTerminalPopup; }
    QComboBox *preferredEditorPopup() const { return m_preferredEditorPopup; }
    QLineEdit *defaultKubeConfigField() const { return m_defaultKubeConfigField; }
    QComboBox *kubeConfigFollowsPopup() const { return m_kubeConfigFollowsPopup; }

    void defaultTerminalAppSelected();
    void setPreferredEditor();
    void defaultKubeConfigChanged();
    void controlTextDidChange();
    void browseKubeConfigClicked();

protected:
    void viewDidLoad() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildLayout(QLabel *kubeConfigHint);
    void connectParts();
    /// Selects what is stored; a stored title that is not in its list gets an entry that says so.
    void selectCurrentChoices();
    void kubeConfigFollowsChosen();

    QComboBox *m_preferredTerminalPopup;
    QComboBox *m_preferredEditorPopup;
    QLineEdit *m_defaultKubeConfigField;
    PathHint *m_kubeConfigHint;
    QComboBox *m_kubeConfigFollowsPopup;
    QLabel *m_followsHint;
};

} // namespace tidewright
