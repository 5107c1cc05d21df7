// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

#include <functional>

class QAbstractItemModel;
class QConcatenateTablesProxyModel;
class QLabel;
class QLineEdit;
class QListView;
class QModelIndex;
class QSortFilterProxyModel;
class QStringListModel;

namespace tidewright {

/// What a list takes besides its entries, when these need not be all there are.
struct OtherEntries
{
    QString note; ///< why they need not be: a sentence
    /// Why a text can be no entry: a sentence; empty when it can.
    std::function<QString(const QString &text)> problem;
};

/// A popup with a search field above the rows of a model: rows that contain the text stay. Deletes itself
/// when closed.
class SearchPopup : public QFrame
{
    Q_OBJECT
public:
    SearchPopup(QAbstractItemModel &rows, const QString &noun, QWidget *parent);

    /// Also offers what was typed, while no entry is just that.
    void acceptOthers(const OtherEntries &others);
    /// Opens under (or above) `anchor` with the given row selected.
    void openAt(const QWidget &anchor, int row);
    /// Puts a text into the search field, as if it had been typed.
    void type(const QString &text);

Q_SIGNALS:
    void chosen(int row);
    void otherChosen(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void search(const QString &text);
    void offerTyped();
    void accept(const QModelIndex &index);
    QString typed() const;
    void moveCurrent(int rows);
    QSize sizeFor(const QWidget &anchor) const;

    const QString m_noun;
    QSortFilterProxyModel *m_matches;
    QLineEdit *m_search;
    QListView *m_list;
    QConcatenateTablesProxyModel *m_rows; ///< the matches, and what was typed
    QStringListModel *m_typedRow;
    QLabel *m_note;
    OtherEntries m_others;
};

} // namespace tidewright
