// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHeaderView>

namespace tidewright {

/// The titles of a table's columns on the window's own ground, starting where the texts below them do. (A
/// style sheet would do the same for sixty kilobytes a table.)
class TableHeader : public QHeaderView
{
public:
    explicit TableHeader(QWidget *parent);

protected:
    void paintSection(QPainter *painter, const QRect &rect, int section) const override;
    QSize sectionSizeFromContents(int section) const override;

private:
    QString title(int section) const;
};

} // namespace tidewright
