// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/listing/FilterOffers.h"

#include <QLineEdit>

class QTreeWidget;

namespace tidewright {

class SharedContentViewController;

/// The field for the filter of the table that is shown. While a word is typed, a list under the field offers
/// what it may become; Tab takes the first offer or the current one. "?" and Ctrl+Space list all words.
class FilterField : public QLineEdit
{
    Q_OBJECT
public:
    explicit FilterField(QWidget *parent = nullptr);

    /// The table whose words are offered; null for none. It must outlive the field.
    void setTable(const SharedContentViewController *table);
    /// The table filters by the field's text now. What does not do what it looks like is said in the tool
    /// tip, and in the list while there is nothing to offer.
    void filterApplied();

    /// Whether a key that was pressed in the field was for the list: then nobody else may have it.
    bool takeKey(const QKeyEvent &key);
    /// The list, for those who look for it; hidden as a rule.
    QTreeWidget *offerList() const { return m_list; }

protected:
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void showNote();
    void offer(bool isAsked);
    void open();
    void take(int row);
    bool moveCurrent(int rows);
    QString note() const;

    const SharedContentViewController *m_table = nullptr;
    QTreeWidget *m_list; ///< a window of its own that never has the focus
    FilterOffers m_offers; ///< in the list
    bool m_isTyped = false; ///< the text that is about to be applied
    bool m_isAsked = false; ///< the user wants to see them
};

} // namespace tidewright
