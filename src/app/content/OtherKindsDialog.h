// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ServedKind.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QSortFilterProxyModel;
class QStandardItemModel;
class QTreeView;

namespace tidewright {

class Shell;
struct ShellResult;
class WindowState;

/// The list of the kinds that a window's cluster serves, with a field that narrows it; the keyboard stays in
/// that field. Asks the cluster when it is made. Deletes itself when closed.
class OtherKindsDialog : public QDialog
{
    Q_OBJECT
public:
    OtherKindsDialog(WindowState &window, QWidget *parent);
    ~OtherKindsDialog() override;

Q_SIGNALS:
    /// The dialog is closed by then.
    void chosen(const tidewright::ServedKind &kind);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void build();
    void load(WindowState &window);
    void loaded(const ShellResult &result);
    void narrow(const QString &text);
    void choose();

    std::shared_ptr<Shell> m_shell;
    std::vector<ServedKind> m_kinds; ///< in the order of the model's rows
    QStandardItemModel *m_rows;
    QSortFilterProxyModel *m_matches;
    QLineEdit *m_filter;
    QTreeView *m_list;
    QLabel *m_note;
    QPushButton *m_open = nullptr;
};

} // namespace tidewright
