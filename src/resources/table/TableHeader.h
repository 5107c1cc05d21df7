// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QHeaderView>

namespace tidewright {

/// The titles of a table's columns on the window's own ground, starting where the texts below them do. (A
/// style sheet would do the same for sixty kilobytes a table.)
class TableHeader : public QHeaderView
{
public:
    explicit TableHeader(QWidget *parent);

    /// What the tool tip of a title says; empty for none.
    void explain(int section, const QString &text) { m_explanations.insert(section, text); }
    QString explanation(int section) const { return m_explanations.value(section); }

protected:
    bool viewportEvent(QEvent *event) override;
    void paintSection(QPainter *painter, const QRect &rect, int section) const override;
    QSize sectionSizeFromContents(int section) const override;

private:
    QString title(int section) const;

    QHash<int, QString> m_explanations;
};

} // namespace tidewright
