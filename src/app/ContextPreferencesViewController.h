// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/PreferencesViewController.h"
#include "core/ContextPolicy.h"

#include <functional>

class QComboBox;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace tidewright {

/// What may be done in which context, and the colour of its windows: a table of the contexts of all windows
/// and of those that something was chosen for, and below it the choices for the selected ones. They apply at
/// once.
class ContextPreferencesViewController : public PreferencesViewController
{
    Q_OBJECT
public:
    enum Column { NameColumn, AccessColumn, ColourColumn, ColumnCount };

    explicit ContextPreferencesViewController(QWidget *parent = nullptr);

    QTableWidget *table() const { return m_table; }
    QComboBox *accessList() const { return m_access; }
    QComboBox *colourList() const { return m_colour; }
    QPushButton *suggestionButton() const { return m_suggestion; }
    /// For contexts that no window knows; Return adds one.
    QLineEdit *otherField() const { return m_other; }

protected:
    void viewDidLoad() override { }
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildTable();
    void buildLayout();
    void connectParts();
    /// Lists the contexts anew, or only what is chosen for them.
    void fill();
    void showPolicies();
    void showChoice();
    void addOther();
    void change(const std::function<ContextPolicy(const QString &context, ContextPolicy now)> &choice);
    QStringList selectedContexts() const;

    QTableWidget *m_table;
    QComboBox *m_access;
    QComboBox *m_colour;
    QLabel *m_hint;
    QPushButton *m_suggestion;
    QLineEdit *m_other;
    QStringList m_added; ///< typed by the user, while nothing is chosen for them
};

} // namespace tidewright
