// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/toolbar/ToolBarDialog.h"

#include "app/toolbar/ToolBarLayout.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace tidewright {

ToolBarDialog::ToolBarDialog(QList<ToolBarItem> items, ToolBarLayout &layout, QWidget *parent)
    : QDialog(parent)
    , m_items(std::move(items))
    , m_layout(layout)
    , m_list(new QListWidget)
{
    setWindowTitle(tr("Customize Toolbar"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *explanation = new QLabel(tr("Ticked commands stand in the toolbar, from top to bottom."));
    m_list->setAccessibleName(tr("Toolbar Items"));
    m_list->setDragDropMode(QAbstractItemView::InternalMove);
    m_list->setIconSize(QSize(16, 16));
    auto *up = new QPushButton(tr("Move &Up"));
    auto *down = new QPushButton(tr("Move &Down"));
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::RestoreDefaults | QDialogButtonBox::Close);
    auto *moves = new QHBoxLayout;
    moves->addWidget(up);
    moves->addWidget(down);
    moves->addStretch();
    auto *column = new QVBoxLayout(this);
    column->addWidget(explanation);
    column->addWidget(m_list);
    column->addLayout(moves);
    column->addWidget(buttons);
    resize(420, 460);
    fill();
    connect(m_list, &QListWidget::itemChanged, this, &ToolBarDialog::store);
    connect(m_list->model(), &QAbstractItemModel::rowsMoved, this, &ToolBarDialog::store);
    connect(up, &QPushButton::clicked, this, [this] { move(-1); });
    connect(down, &QPushButton::clicked, this, [this] { move(1); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons->button(QDialogButtonBox::RestoreDefaults), &QPushButton::clicked, this, [this] {
        m_layout.reset();
        fill();
    });
}

void ToolBarDialog::fill()
{
    const QSignalBlocker blocker(m_list);
    const QStringList chosen = m_layout.identifiers();
    QList<ToolBarItem> ordered = m_items;
    const auto place = [&chosen](const ToolBarItem &item) {
        const auto index = chosen.indexOf(item.identifier);
        return index < 0 ? chosen.size() : index;
    };
    std::stable_sort(ordered.begin(), ordered.end(),
        [&place](const ToolBarItem &a, const ToolBarItem &b) { return place(a) < place(b); });
    m_list->clear();
    for (const ToolBarItem &item : std::as_const(ordered)) {
        auto *row = new QListWidgetItem(item.icon, item.title, m_list);
        row->setData(Qt::UserRole, item.identifier);
        row->setFlags((row->flags() | Qt::ItemIsUserCheckable) & ~Qt::ItemIsDropEnabled);
        row->setCheckState(chosen.contains(item.identifier) ? Qt::Checked : Qt::Unchecked);
    }
    m_list->setCurrentRow(0);
}

/// Actions that are not there now keep their places behind the others.
void ToolBarDialog::store()
{
    QStringList identifiers;
    QStringList known;
    for (int row = 0; row < m_list->count(); ++row) {
        const QListWidgetItem *item = m_list->item(row);
        known.append(item->data(Qt::UserRole).toString());
        if (item->checkState() == Qt::Checked) {
            identifiers.append(known.last());
        }
    }
    for (const QString &identifier : m_layout.identifiers()) {
        if (!known.contains(identifier)) {
            identifiers.append(identifier);
        }
    }
    m_layout.setIdentifiers(identifiers);
}

void ToolBarDialog::move(int step)
{
    const int row = m_list->currentRow();
    const int target = row + step;
    if (row < 0 || target < 0 || target >= m_list->count()) {
        return;
    }
    {
        const QSignalBlocker blocker(m_list);
        m_list->insertItem(target, m_list->takeItem(row));
    }
    m_list->setCurrentRow(target);
    store();
}

} // namespace tidewright
