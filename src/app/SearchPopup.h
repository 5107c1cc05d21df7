// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class QAbstractItemModel;
class QLineEdit;
class QListView;
class QModelIndex;
class QSortFilterProxyModel;

namespace tidewright {

/// A popup with a search field above the rows of a model: rows that contain the text stay. Deletes itself
/// when closed.
class SearchPopup : public QFrame
{
    Q_OBJECT
public:
    SearchPopup(QAbstractItemModel &rows, const QString &noun, QWidget *parent);

    /// Opens under (or above) `anchor` with the given row selected.
    void openAt(const QWidget &anchor, int row);
    /// Puts a text into the search field, as if it had been typed.
    void type(const QString &text);

Q_SIGNALS:
    void chosen(int row);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void search(const QString &text);
    void accept(const QModelIndex &index);
    void moveCurrent(int rows);
    QSize sizeFor(const QWidget &anchor) const;

    QSortFilterProxyModel *m_matches;
    QLineEdit *m_search;
    QListView *m_list;
};

} // namespace tidewright
