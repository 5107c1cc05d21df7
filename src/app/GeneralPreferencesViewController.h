// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PreferencesViewController.h"

class QComboBox;
class QLineEdit;

namespace tidewright {

/// Which terminal, editor and kubeconfig the user works with. Every change is in the settings at once.
class GeneralPreferencesViewController : public PreferencesViewController
{
    Q_OBJECT
public:
    explicit GeneralPreferencesViewController(QWidget *parent = nullptr);

    QComboBox *preferredTerminalPopup() const { return m_preferredTerminalPopup; }
    QComboBox *preferredEditorPopup() const { return m_preferredEditorPopup; }
    QLineEdit *defaultKubeConfigField() const { return m_defaultKubeConfigField; }

    void defaultTerminalAppSelected();
    void setPreferredEditor();
    void defaultKubeConfigChanged();
    void controlTextDidChange();
    void browseKubeConfigClicked();

protected:
    void viewDidLoad() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildLayout();
    void connectParts();
    /// Selects what is stored; a stored title that is not in its list gets an entry that says so.
    void selectCurrentChoices();
    void explainKubeConfig();

    QComboBox *m_preferredTerminalPopup;
    QComboBox *m_preferredEditorPopup;
    QLineEdit *m_defaultKubeConfigField;
    QLabel *m_kubeConfigHint;
    bool m_explaining = false;
};

} // namespace tidewright
