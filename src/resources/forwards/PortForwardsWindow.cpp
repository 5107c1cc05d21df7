// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/forwards/PortForwardsWindow.h"

#include "platform/text/DisplayText.h"
#include "resources/widgets/Windows.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <QTreeView>
#include <QVBoxLayout>

namespace tidewright {

namespace {

/// Shows the details of cells.
class ForwardDelegate : public QStyledItemDelegate
{
public:
    ForwardDelegate(const PortForwards &forwards, QObject *parent)
        : QStyledItemDelegate(parent)
        , m_forwards(forwards)
    {
    }

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
        const QModelIndex &index) override
    {
        if (event->type() != QEvent::ToolTip) {
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        }
        QToolTip::showText(
            event->globalPos(), display_text::toolTip(m_forwards.details(index)), view, option.rect);
        return true;
    }

private:
    const PortForwards &m_forwards;
};

QPointer<PortForwardsWindow> &theWindow()
{
    static QPointer<PortForwardsWindow> window;
    return window;
}

} // namespace

void PortForwardsWindow::present()
{
    if (!theWindow()) {
        theWindow() = new PortForwardsWindow(PortForwards::shared());
        theWindow()->setAttribute(Qt::WA_DeleteOnClose);
    }
    bringToFront(*theWindow());
}

void PortForwardsWindow::dismiss()
{
    delete theWindow();
}

PortForwardsWindow::PortForwardsWindow(PortForwards &forwards)
    : m_forwards(forwards)
    , m_view(new QTreeView)
    , m_open(new QPushButton(tr("&Open in Browser")))
    , m_copy(new QPushButton(tr("&Copy Address")))
    , m_again(new QPushButton(tr("&Try Again")))
    , m_stop(new QPushButton(tr("&Stop")))
{
    setWindowTitle(tr("Port Forwards"));
    m_view->setModel(&forwards);
    m_view->setItemDelegate(new ForwardDelegate(forwards, this));
    m_view->setRootIsDecorated(false);
    m_view->setUniformRowHeights(true);
    m_view->setAllColumnsShowFocus(true);
    m_view->setMouseTracking(true);
    m_view->setAccessibleName(windowTitle());
    buildLayout();
    connect(m_open, &QPushButton::clicked, this, &PortForwardsWindow::openAddress);
    connect(m_copy, &QPushButton::clicked, this, &PortForwardsWindow::copyAddress);
    connect(m_again, &QPushButton::clicked, this, &PortForwardsWindow::tryAgain);
    connect(m_stop, &QPushButton::clicked, this, &PortForwardsWindow::stop);
    connect(m_view, &QTreeView::clicked, this, [this](const QModelIndex &index) {
        if (index.column() == PortForwards::Address) {
            openAddress();
        }
    });
    connect(m_view, &QTreeView::entered, this, [this](const QModelIndex &index) {
        m_view->viewport()->setCursor(
            index.column() == PortForwards::Address ? Qt::PointingHandCursor : Qt::ArrowCursor);
    });
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &PortForwardsWindow::updateButtons);
    connect(&forwards, &QAbstractItemModel::dataChanged, this, &PortForwardsWindow::updateButtons);
    connect(&forwards, &QAbstractItemModel::rowsRemoved, this, &PortForwardsWindow::updateButtons);
    connect(&forwards, &QAbstractItemModel::modelReset, this, &PortForwardsWindow::updateButtons);
    connect(&forwards, &QAbstractItemModel::rowsInserted, this,
        [this](const QModelIndex &, int, int last) { m_view->setCurrentIndex(m_forwards.index(last, 0)); });
    m_view->setCurrentIndex(forwards.index(forwards.rowCount() - 1, 0));
    updateButtons();
}

void PortForwardsWindow::buildLayout()
{
    constexpr int widths[] = {210, 60, 170, 320, 130, 100};
    for (int column = 0; column < static_cast<int>(std::size(widths)); ++column) {
        m_view->setColumnWidth(column, widths[column]);
    }
    auto *note
        = new QLabel(tr("Forwards go on when the window that they were started from is closed, and end "
                        "with Tidewright."));
    note->setWordWrap(true);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *button : {m_open, m_copy, m_again}) {
        buttons->addWidget(button);
    }
    buttons->addStretch();
    buttons->addWidget(m_stop);
    auto *column = new QVBoxLayout(this);
    column->addWidget(m_view, 1);
    column->addWidget(note);
    column->addLayout(buttons);
    resize(1160, 280);
}

PortForward *PortForwardsWindow::chosen() const
{
    return m_forwards.at(m_view->currentIndex().row());
}

void PortForwardsWindow::updateButtons()
{
    const PortForward *forward = chosen();
    const bool isOpen = forward && forward->state() == PortForward::State::Forwarding;
    m_open->setEnabled(isOpen);
    m_copy->setEnabled(isOpen);
    m_again->setEnabled(forward
        && (forward->state() == PortForward::State::Failed
            || forward->state() == PortForward::State::Reconnecting));
    m_stop->setEnabled(forward);
}

void PortForwardsWindow::openAddress()
{
    if (const PortForward *forward = chosen();
        forward && forward->state() == PortForward::State::Forwarding) {
        QDesktopServices::openUrl(forward->address());
    }
}

void PortForwardsWindow::copyAddress()
{
    if (const PortForward *forward = chosen()) {
        QGuiApplication::clipboard()->setText(forward->address().toString());
    }
}

void PortForwardsWindow::tryAgain()
{
    if (PortForward *forward = chosen()) {
        forward->start();
    }
}

void PortForwardsWindow::stop()
{
    m_forwards.stop(m_view->currentIndex().row());
}

} // namespace tidewright
