// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QSplitter>

namespace tidewright {

/// A window's tables above its console. Takes ownership of both views.
class PodConsoleSplitViewController : public QSplitter
{
    Q_OBJECT
public:
    PodConsoleSplitViewController(QWidget *tables, QWidget *console, QWidget *parent = nullptr);

    QWidget *tablesTabSplitItem() const { return m_tablesTabSplitItem; }
    QWidget *consoleSplitItem() const { return m_consoleSplitItem; }

private:
    QPointer<QWidget> m_tablesTabSplitItem;
    QPointer<QWidget> m_consoleSplitItem;
};

} // namespace tidewright
