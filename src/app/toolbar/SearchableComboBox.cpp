// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/toolbar/SearchableComboBox.h"

#include "app/state/ChoiceList.h"
#include "platform/text/DisplayText.h"

#include <QKeyEvent>
#include <QSignalBlocker>
#include <QStyleOptionComboBox>

namespace tidewright {

SearchableComboBox::SearchableComboBox(const QString &accessibleName, const QString &noun, QWidget *parent)
    : QComboBox(parent)
    , m_noun(noun)
{
    setAccessibleName(accessibleName);
    // The width must not follow the longest of thousands of names.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(18);
    setFocusPolicy(Qt::StrongFocus);
}

void SearchableComboBox::showList(const ChoiceList &list, const QStringList &above)
{
    const QSignalBlocker blocker(this);
    if (m_popup) {
        m_popup->close(); // its rows are those of before
    }
    clear();
    if (list.loading) {
        addItem(QStringLiteral("Loading..."));
    } else if (!list.entries.isEmpty()) {
        addItems(above);
        if (!above.isEmpty()) {
            insertSeparator(count());
        }
        addItems(list.entries);
        setCurrentIndex(list.selected.isEmpty()
                ? -1
                : findText(list.selected, Qt::MatchFixedString | Qt::MatchCaseSensitive));
    }
    setToolTip(display_text::toolTip(list.selected));
    setEnabled(list.enabled);
    m_acceptsOthers = list.acceptsOthers && m_others.problem;
}

QSize SearchableComboBox::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 12, QComboBox::minimumSizeHint().height()};
}

void SearchableComboBox::showPopup()
{
    if (m_popup || !isEnabled() || (count() == 0 && !m_acceptsOthers)) {
        return;
    }
    m_popup = new SearchPopup(*model(), m_noun, this);
    if (m_acceptsOthers) {
        m_popup->acceptOthers(m_others);
    }
    connect(m_popup, &SearchPopup::chosen, this, &SearchableComboBox::choose);
    connect(m_popup, &SearchPopup::otherChosen, this, &SearchableComboBox::chooseOther);
    m_popup->openAt(*this, currentIndex());
}

void SearchableComboBox::hidePopup()
{
    if (m_popup) {
        m_popup->close();
    }
    QComboBox::hidePopup();
}

/// The entries stay what they are; only what is painted is cleaned.
void SearchableComboBox::initStyleOption(QStyleOptionComboBox *option) const
{
    QComboBox::initStyleOption(option);
    option->currentText = display_text::name(option->currentText);
}

void SearchableComboBox::choose(int row)
{
    setCurrentIndex(row);
    setToolTip(display_text::toolTip(currentText()));
    Q_EMIT activated(row);
    Q_EMIT textActivated(currentText());
}

void SearchableComboBox::chooseOther(const QString &text)
{
    addItem(text);
    choose(count() - 1);
}

void SearchableComboBox::keyPressEvent(QKeyEvent *event)
{
    const QString text = event->text();
    const bool typed = !text.isEmpty() && text.front().isPrint() && event->key() != Qt::Key_Space
        && !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F4:
        showPopup();
        break;
    default:
        if (!typed) {
            event->ignore();
            break;
        }
        showPopup();
        if (m_popup) {
            m_popup->type(text);
        }
    }
}

void SearchableComboBox::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

} // namespace tidewright
