// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/toolbar/SearchPopup.h"

#include "platform/text/DisplayText.h"

#include <QConcatenateTablesProxyModel>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QStringListModel>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr int visibleRows = 14;

bool isSeparator(const QModelIndex &index)
{
    return index.data(Qt::AccessibleDescriptionRole).toString() == QLatin1String("separator");
}

class EntryDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QString displayText(const QVariant &value, const QLocale &locale) const override
    {
        return QStyledItemDelegate::displayText(display_text::name(value.toString()), locale);
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        if (!isSeparator(index)) {
            QStyledItemDelegate::paint(painter, option, index);
            return;
        }
        painter->setPen(option.palette.color(QPalette::Mid));
        const int y = option.rect.center().y();
        painter->drawLine(option.rect.left() + 4, y, option.rect.right() - 4, y);
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        size.setHeight(isSeparator(index) ? 9 : size.height() + 6);
        return size;
    }
};

} // namespace

SearchPopup::SearchPopup(QAbstractItemModel &rows, const QString &noun, QWidget *parent)
    : QFrame(parent, Qt::Popup)
    , m_noun(noun)
    , m_matches(new QSortFilterProxyModel(this))
    , m_search(new QLineEdit)
    , m_list(new QListView)
    , m_rows(new QConcatenateTablesProxyModel(this))
    , m_typedRow(new QStringListModel(this))
    , m_note(new QLabel)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
    m_matches->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_matches->setSourceModel(&rows);
    m_search->setPlaceholderText(tr("Search for a %1").arg(noun));
    m_search->setAccessibleName(m_search->placeholderText());
    m_search->setClearButtonEnabled(true);
    m_search->installEventFilter(this);
    m_rows->addSourceModel(m_matches);
    m_rows->addSourceModel(m_typedRow);
    m_list->setModel(m_rows);
    m_list->setItemDelegate(new EntryDelegate(m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setMouseTracking(true);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setAccessibleName(tr("Matches"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(m_search);
    layout->addWidget(m_note);
    layout->addWidget(m_list, 1);
    m_note->setWordWrap(true);
    m_note->setTextFormat(Qt::PlainText);
    m_note->setMargin(2);
    m_note->hide();
    setFocusProxy(m_search);
    connect(m_search, &QLineEdit::textChanged, this, &SearchPopup::search);
    connect(m_list, &QListView::clicked, this, &SearchPopup::accept);
    connect(m_list, &QListView::entered, m_list, &QListView::setCurrentIndex);
}

void SearchPopup::acceptOthers(const OtherEntries &others)
{
    m_others = others;
    m_note->setText(others.note);
    m_note->show();
    m_search->setPlaceholderText(tr("Type or search a %1").arg(m_noun));
    m_search->setAccessibleDescription(others.note);
}

void SearchPopup::openAt(const QWidget &anchor, int row)
{
    m_list->setCurrentIndex(
        m_rows->mapFromSource(m_matches->mapFromSource(m_matches->sourceModel()->index(row, 0))));
    resize(sizeFor(anchor));
    const QRect screen = anchor.screen()->availableGeometry();
    QPoint position = anchor.mapToGlobal(QPoint(0, anchor.height()));
    if (position.y() + height() > screen.bottom()) {
        position.setY(qMax(screen.top(), anchor.mapToGlobal(QPoint()).y() - height()));
    }
    position.setX(qBound(screen.left(), position.x(), qMax(screen.left(), screen.right() - width())));
    move(position);
    show();
    m_search->setFocus(Qt::PopupFocusReason);
    m_list->scrollTo(m_list->currentIndex(), QAbstractItemView::PositionAtCenter);
}

void SearchPopup::type(const QString &text)
{
    m_search->insert(text);
}

QSize SearchPopup::sizeFor(const QWidget &anchor) const
{
    int height = layout()->contentsMargins().top() + layout()->contentsMargins().bottom()
        + layout()->spacing() + m_search->sizeHint().height() + 4;
    const int room = m_others.problem ? 1 : 0; // for what will be typed
    for (int row = 0; row < qMin(visibleRows, m_matches->rowCount()) + room; ++row) {
        height += m_list->sizeHintForIndex(m_rows->index(qMin(row, m_rows->rowCount() - 1), 0)).height();
    }
    // Names measured in full would cost a text layout each: the longest by its length is close enough.
    QString longest;
    for (int row = 0; row < m_matches->rowCount(); ++row) {
        const QString text = m_matches->index(row, 0).data().toString();
        longest = text.size() > longest.size() ? text : longest;
    }
    const int wide
        = fontMetrics().horizontalAdvance(longest) + m_list->verticalScrollBar()->sizeHint().width() + 36;
    const int width = qBound(qMax(anchor.width(), 240), wide, 600);
    if (!m_note->isHidden()) {
        constexpr int noteLines = 3; // of the longest text there
        height += m_note->fontMetrics().lineSpacing() * noteLines + layout()->spacing();
    }
    return {width, height};
}

QString SearchPopup::typed() const
{
    return m_search->text().trimmed();
}

void SearchPopup::search(const QString &text)
{
    m_matches->setFilterFixedString(text.trimmed());
    offerTyped();
    if (!text.isEmpty() || !m_list->currentIndex().isValid()) {
        // A name that begins with what was typed comes before one that holds it further on.
        const QModelIndexList begun = text.isEmpty()
            ? QModelIndexList()
            : m_matches->match(m_matches->index(0, 0), Qt::DisplayRole, text, 1, Qt::MatchStartsWith);
        m_list->setCurrentIndex(begun.isEmpty() ? m_rows->index(0, 0) : m_rows->mapFromSource(begun.first()));
    }
}

void SearchPopup::offerTyped()
{
    if (!m_others.problem) {
        return;
    }
    const QString text = typed();
    const QString problem = text.isEmpty() ? QString() : m_others.problem(text);
    const bool isEntry = !m_matches
                              ->match(m_matches->index(0, 0), Qt::DisplayRole, text, 1,
                                  Qt::MatchExactly | Qt::MatchCaseSensitive)
                              .isEmpty();
    const bool isOffered = !text.isEmpty() && problem.isEmpty() && !isEntry;
    m_typedRow->setStringList(isOffered ? QStringList(tr("Use “%1”").arg(text)) : QStringList());
    m_note->setText(problem.isEmpty() || m_rows->rowCount() > 0 ? m_others.note : problem);
}

void SearchPopup::accept(const QModelIndex &index)
{
    if (!index.isValid() || isSeparator(index)) {
        return;
    }
    const QModelIndex source = m_rows->mapToSource(index);
    const bool isTyped = source.model() == m_typedRow;
    const int row = isTyped ? -1 : m_matches->mapToSource(source).row();
    const QString text = typed();
    close();
    if (isTyped) {
        Q_EMIT otherChosen(text);
    } else {
        Q_EMIT chosen(row);
    }
}

void SearchPopup::moveCurrent(int rows)
{
    const int step = rows < 0 ? -1 : 1;
    int target = qBound(0, m_list->currentIndex().row() + rows, qMax(0, m_rows->rowCount() - 1));
    if (isSeparator(m_rows->index(target, 0))) {
        target += step;
    }
    m_list->setCurrentIndex(m_rows->index(target, 0));
}

bool SearchPopup::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress) {
        return QFrame::eventFilter(watched, event);
    }
    switch (static_cast<QKeyEvent *>(event)->key()) {
    case Qt::Key_Down:
        moveCurrent(1);
        return true;
    case Qt::Key_Up:
        moveCurrent(-1);
        return true;
    case Qt::Key_PageDown:
        moveCurrent(visibleRows - 1);
        return true;
    case Qt::Key_PageUp:
        moveCurrent(1 - visibleRows);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        accept(m_list->currentIndex());
        return true;
    case Qt::Key_Escape:
    case Qt::Key_Tab:
        close();
        return true;
    default:
        return QFrame::eventFilter(watched, event);
    }
}

} // namespace tidewright
