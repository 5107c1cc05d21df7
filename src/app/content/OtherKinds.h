// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ServedKind.h"

#include <QHash>
#include <QObject>

namespace tidewright {

class PrimaryContentController;
class SharedContentViewController;
class SidebarController;
class WindowState;

/// The tables of one cluster window whose kinds have none of their own: the user opens them from the list of
/// what the cluster serves, and closes them. Those that are pinned in a context come back with it, in every
/// window. Main thread.
class OtherKinds : public QObject
{
    Q_OBJECT
public:
    /// All must outlive it, but for its destructor.
    OtherKinds(WindowState &window, PrimaryContentController &content, SidebarController &sidebar,
        QObject *parent = nullptr);

    /// Lists what the cluster serves, in a dialog, and opens what the user chooses there.
    void choose();
    /// Shows the table of that kind: its own one where there is one.
    void open(const ServedKind &kind);
    /// Does nothing for a name (ServedKind::resource) that is not open. What is pinned stays so.
    void close(const QString &resource);
    /// In the window's context.
    void setPinned(const QString &resource, bool pinned);
    /// The window may have turned to another context: its pinned kinds come, those of the old one go, but for
    /// the one that is shown.
    void followContext();

private:
    void add(const ServedKind &kind);
    void replaceTable(const ServedKind &kind, const QStringList &titles);
    SharedContentViewController *makeTable(const ServedKind &kind);
    bool isShown(const QString &resource) const;
    bool isOpen(const QString &resource) const;

    WindowState &m_window;
    PrimaryContentController &m_content;
    SidebarController &m_sidebar;
    QString m_context;
    std::vector<ServedKind> m_open;
    QHash<QString, QStringList> m_titles; ///< of the columns, by resource, as they were seen last
};

} // namespace tidewright
