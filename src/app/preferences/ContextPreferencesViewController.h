// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/preferences/PreferencesViewController.h"
#include "core/kubeconfig/ContextPolicy.h"

#include <functional>
#include <vector>

class QComboBox;
class QPushButton;
class QTableWidget;

namespace tidewright {

/// What may be done in which context, and the colour of its windows: a table of the contexts of all windows,
/// of the default kubeconfig and of those that something was chosen for, and below it the choices for
/// the selected ones. They apply at once.
class ContextPreferencesViewController : public PreferencesViewController
{
    Q_OBJECT
public:
    enum Column { NameColumn, FilesColumn, AccessColumn, ColourColumn, ColumnCount };

    explicit ContextPreferencesViewController(QWidget *parent = nullptr);

    QTableWidget *table() const { return m_table; }
    QComboBox *accessList() const { return m_access; }
    QComboBox *colourList() const { return m_colour; }
    QPushButton *suggestionButton() const { return m_suggestion; }

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
    void makeRows(const QList<ContextKey> &selected);
    void change(
        const std::function<ContextPolicy(const ContextKey &context, const ContextPolicy &now)> &choice);
    const ContextKey &contextAt(int row) const;
    QList<ContextKey> selectedContexts() const;

    QTableWidget *m_table;
    QComboBox *m_access;
    QComboBox *m_colour;
    QLabel *m_hint;
    QPushButton *m_suggestion;
    std::vector<ContextKey> m_defaults; ///< those of the default kubeconfig
    std::vector<ContextKey> m_contexts; ///< one for each row
};

} // namespace tidewright
