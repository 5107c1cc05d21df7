// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QToolBar>

class QToolButton;

namespace tidewright {

class FilterField;
class KubeSplitViewController;
class PrimaryContentController;
class SearchableComboBox;
struct ContextKey;

/// The toolbar of one cluster window: its context and namespace lists, room for commands, and the filter of
/// the table that is shown. In a narrow window the commands that do not fit go into a menu; the rest stays.
class ClusterToolBar : public QWidget
{
    Q_OBJECT
public:
    /// Both must outlive the toolbar.
    ClusterToolBar(
        KubeSplitViewController &state, PrimaryContentController &content, QWidget *parent = nullptr);

    /// Puts buttons for these commands between the lists and the filter, in place of those before.
    void setCommands(const QList<QAction *> &commands);
    QList<QAction *> commands() const { return m_bar->actions(); }

    /// Shows beside the context list what may be done in that context, when that is not everything.
    void showAccessBadge(const ContextKey &context);

    SearchableComboBox *contextPopupButton() const { return m_contexts; }
    SearchableComboBox *namespacesPopupButton() const { return m_namespaces; }
    QToolButton *accessBadge() const { return m_accessBadge; }
    FilterField *filterField() const { return m_filter; }

Q_SIGNALS:
    /// The user wants to see where the access is chosen.
    void accessPreferencesRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showNamespaces();
    void chooseNamespace(const QString &name);
    void setUpFilter();
    void followShownTable();

    KubeSplitViewController &m_state;
    PrimaryContentController &m_content;
    SearchableComboBox *m_contexts;
    QToolButton *m_accessBadge;
    SearchableComboBox *m_namespaces;
    FilterField *m_filter;
    QToolBar *m_bar;
};

} // namespace tidewright
