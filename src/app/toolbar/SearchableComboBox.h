// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/toolbar/SearchPopup.h"

#include <QComboBox>
#include <QPointer>

namespace tidewright {

struct ChoiceList;

/// A list to choose one name from, in which typing searches; quick with thousands of names. Nothing but the
/// popup changes the choice: neither the wheel nor a stray key switches a cluster. Reports the user's choices
/// by textActivated, also of a text that was typed and becomes an entry then.
class SearchableComboBox : public QComboBox
{
    Q_OBJECT
public:
    /// `noun` is what one entry is, for the placeholder of the search ("context").
    SearchableComboBox(const QString &accessibleName, const QString &noun, QWidget *parent = nullptr);

    /// What is offered for a list that accepts others than its entries.
    void setOtherEntries(const OtherEntries &others) { m_others = others; }
    /// Shows the list. Entries of `above` stand first, set apart by a separator, when there are others.
    void showList(const ChoiceList &list, const QStringList &above = {});

    void showPopup() override;
    void hidePopup() override;
    QSize minimumSizeHint() const override;

protected:
    void initStyleOption(QStyleOptionComboBox *option) const override;
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void choose(int row);
    void chooseOther(const QString &text);

    QString m_noun;
    OtherEntries m_others;
    bool m_acceptsOthers = false;
    QPointer<SearchPopup> m_popup;
};

} // namespace tidewright
