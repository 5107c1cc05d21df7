// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/toolbar/FilterField.h"

#include "platform/text/DisplayText.h"
#include "resources/table/SharedContentViewController.h"

#include <QKeyEvent>
#include <QScreen>
#include <QTreeWidget>

#include <algorithm>
#include <utility>

namespace tidewright {

namespace {

constexpr int visibleOffers = 14;
constexpr int columnGap = 16;
constexpr int rowGap = 6;

} // namespace

FilterField::FilterField(QWidget *parent)
    : QLineEdit(parent)
    , m_list(new QTreeWidget(this))
{
    setAccessibleName(QStringLiteral("Filter"));
    setPlaceholderText(tr("Filter by name, or ? for help"));
    setClearButtonEnabled(true);
    m_list->setWindowFlags(Qt::ToolTip);
    m_list->setAttribute(Qt::WA_ShowWithoutActivating);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setAccessibleName(tr("Filter Words"));
    m_list->setHeaderHidden(true);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setColumnCount(2);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(m_list, &QTreeWidget::itemClicked, this,
        [this](QTreeWidgetItem *item) { take(m_list->indexOfTopLevelItem(item)); });
    connect(this, &QLineEdit::textEdited, this, [this] { m_isTyped = true; });
    showNote();
}

void FilterField::setTable(const SharedContentViewController *table)
{
    m_table = table;
    m_list->hide();
    showNote();
}

QString FilterField::note() const
{
    return m_table ? m_table->filterNote() : QString();
}

void FilterField::filterApplied()
{
    showNote();
    if (std::exchange(m_isTyped, false)) {
        offer(false);
    } else {
        m_list->hide();
    }
}

void FilterField::showNote()
{
    const QString text = note();
    setToolTip(display_text::toolTip(text.isEmpty()
            ? tr("Shows rows with all of these words: cart, -test, ns:shop, status:crash, restarts:>0, "
                 "age:<1h, label:app=cart. Type ? for more.")
            : text));
}

/// The list is filled for the word at the cursor. While the user types one, only for what has been begun.
void FilterField::offer(bool isAsked)
{
    m_list->hide();
    if (!m_table) {
        return;
    }
    m_offers = filterOffers(text(), cursorPosition(), m_table->kind(), m_table->tableItems());
    const bool isHelp = text().sliced(m_offers.begin, m_offers.end - m_offers.begin) == QLatin1String("?");
    m_isAsked = isAsked || isHelp;
    if (m_offers.begin == m_offers.end && !m_isAsked) {
        return;
    }
    m_list->clear();
    for (const FilterOffer &each : std::as_const(m_offers.offers)) {
        auto *item = new QTreeWidgetItem(m_list, {each.word, each.description});
        item->setForeground(1, palette().brush(QPalette::PlaceholderText));
        item->setSizeHint(
            0, {fontMetrics().horizontalAdvance(each.word) + columnGap, fontMetrics().height() + rowGap});
    }
    if (const QString reason = note(); m_offers.offers.isEmpty() && !reason.isEmpty()) {
        auto *item = new QTreeWidgetItem(m_list, {display_text::clean(reason)});
        item->setFlags(Qt::ItemIsEnabled);
        item->setSizeHint(
            0, {fontMetrics().horizontalAdvance(reason) + columnGap, fontMetrics().height() + rowGap});
    }
    if (m_list->topLevelItemCount() > 0) {
        open();
    }
}

void FilterField::open()
{
    const int rows = std::min(m_list->topLevelItemCount(), visibleOffers);
    const int frame = 2 * m_list->frameWidth();
    m_list->resizeColumnToContents(0);
    const QAbstractItemView &view = *m_list;
    const int wanted = m_list->columnWidth(0) + view.sizeHintForColumn(1) + columnGap + frame;
    const QRect room = screen()->availableGeometry();
    m_list->resize(
        std::min(std::max(width(), wanted), room.width()), rows * m_list->sizeHintForRow(0) + frame);
    const QRect outer(window()->mapToGlobal(QPoint()), window()->size());
    QPoint place = mapToGlobal(rect().bottomLeft());
    place.setX(std::max(room.left(), std::min(place.x(), outer.right() + 1 - m_list->width())));
    m_list->move(place);
    m_list->show();
}

bool FilterField::takeKey(const QKeyEvent &key)
{
    if (key.key() == Qt::Key_Space && key.modifiers() == Qt::ControlModifier) {
        offer(true);
        return true;
    }
    if (!m_list->isVisible()) {
        return false;
    }
    switch (key.key()) {
    case Qt::Key_Escape:
        m_list->hide();
        return true;
    case Qt::Key_Tab:
        take(std::max(0, m_list->currentIndex().row()));
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_list->currentIndex().isValid()) {
            take(m_list->currentIndex().row());
            return true;
        }
        break;
    case Qt::Key_Down:
        return moveCurrent(1);
    case Qt::Key_Up:
        return moveCurrent(-1);
    default:
        break;
    }
    return false;
}

/// Names are typed more often than words that begin like them: then the arrows go to the table, as they do
/// without a list.
bool FilterField::moveCurrent(int rows)
{
    if ((!m_isAsked && !m_offers.areValues) || m_offers.offers.isEmpty()) {
        return false;
    }
    const int current = m_list->currentIndex().row();
    const int row = current < 0 && rows < 0 ? -1 : current + rows;
    const int last = m_list->topLevelItemCount() - 1;
    m_list->setCurrentItem(m_list->topLevelItem(row < 0 ? last : row > last ? 0 : row));
    return true;
}

void FilterField::take(int row)
{
    if (row < 0 || row >= m_offers.offers.size()) {
        m_list->hide();
        return;
    }
    const QString word = m_offers.offers.at(row).word;
    setSelection(static_cast<int>(m_offers.begin), static_cast<int>(m_offers.end - m_offers.begin));
    insert(word.endsWith(QLatin1Char(':')) ? word : QString(word + QLatin1Char(' ')));
}

void FilterField::focusOutEvent(QFocusEvent *event)
{
    m_list->hide();
    QLineEdit::focusOutEvent(event);
}

void FilterField::hideEvent(QHideEvent *event)
{
    m_list->hide();
    QLineEdit::hideEvent(event);
}

} // namespace tidewright
