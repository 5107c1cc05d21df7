// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/PodController.h"

#include "platform/Diagnostics.h"
#include "pods/ContainerButton.h"
#include "pods/PaddedTextField.h"
#include "pods/Pod.h"
#include "pods/TableButtonView.h"
#include "resources/ResourceTableView.h"

#include <QMenu>

#include <algorithm>

namespace tidewright {

namespace {

constexpr int nameColumnIndex = 0;
constexpr int containersColumn = 4;
/// Cells that are built and out of sight cost memory; beyond this many, those without a chosen container are
/// dropped.
constexpr std::size_t keptCells = 400;
/// While a sorted table fills, other rows come into sight again and again; building all their cells at once
/// would be felt.
constexpr int cellsPerTurn = 8;

const Pod &podAt(const ArrangingModel &model, int row)
{
    return static_cast<const Pod &>(*model.arrangedRow(row));
}

/// The buttons stand where the text would.
class ContainersDelegate : public RowDelegate
{
public:
    using RowDelegate::RowDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        RowDelegate::initStyleOption(option, index);
        option->text.clear();
    }
};

} // namespace

PodController::PodController(WindowState &window, QWidget *parent)
    : SharedContentViewController(podKind(), window, parent)
{
    tableView().setItemDelegateForColumn(nameColumnIndex, new PaddedTextField(&tableView()));
    tableView().setItemDelegateForColumn(containersColumn, new ContainersDelegate(&tableView()));
    connect(&tableView(), &ResourceTableView::visibleRowsChanged, this, &PodController::buildVisibleCells);
}

void PodController::reloadPods()
{
    loadContent(true);
}

std::vector<ContainerButton *> PodController::containerButtons() const
{
    std::vector<ContainerButton *> buttons;
    for (const auto &button : m_containerButtons) {
        if (button) {
            buttons.push_back(button);
        }
    }
    return buttons;
}

std::vector<ContainerPair> PodController::selectedContainerPairs() const
{
    std::vector<ContainerPair> pairs;
    for (const ContainerButton *button : containerButtons()) {
        if (button->isChecked()) {
            pairs.emplace_back(button->pod(), button->text());
        }
    }
    return pairs;
}

void PodController::rowsChanged()
{
    forgetGoneCells();
    // A pod out of sight may have got other containers: what was chosen there is no longer what it seems.
    std::vector<QPersistentModelIndex> built;
    for (const Cell &cell : m_cells) {
        built.push_back(cell.index);
    }
    for (const QPersistentModelIndex &index : built) {
        ensureCell(index);
    }
    Q_EMIT selectedContainersChanged();
}

void PodController::selectContainer(ContainerButton *button)
{
    writeDiagnostic(QLatin1String("select container ") + button->accessibleName());
    Q_EMIT selectedContainersChanged();
}

void PodController::buildVisibleCells()
{
    forgetGoneCells();
    const auto [first, last] = tableView().visibleRows();
    int built = 0;
    for (int row = first; row >= 0 && row <= last; ++row) {
        built += ensureCell(arrangedObjects().index(row, containersColumn));
        if (built == cellsPerTurn) {
            QMetaObject::invokeMethod(this, &PodController::buildVisibleCells, Qt::QueuedConnection);
            return;
        }
    }
    if (m_cells.size() > keptCells) {
        dropCellsOutOfSight();
    }
}

TableButtonView *PodController::cellAt(const QModelIndex &index) const
{
    return qobject_cast<TableButtonView *>(tableView().indexWidget(index));
}

bool PodController::ensureCell(const QModelIndex &index)
{
    const Pod &pod = podAt(arrangedObjects(), index.row());
    const TableButtonView *present = cellAt(index);
    if (present ? present->pod() == pod.name && present->containers() == pod.containers
                : pod.containers.isEmpty()) {
        return false;
    }
    auto *built = new TableButtonView(pod.name, pod.containers, tableView().viewport());
    for (ContainerButton *button : built->buttons()) {
        connect(button, &QPushButton::clicked, this, [this, button] { selectContainer(button); });
        m_containerButtons.emplace_back(button);
    }
    if (present) {
        for (ContainerButton *replaced : present->buttons()) {
            replaced->setChecked(false); // it lives on for a moment
        }
    }
    tableView().setIndexWidget(index, built); // ends the replaced cell
    m_cells.push_back({index, built});
    return true;
}

void PodController::forgetGoneCells()
{
    std::erase_if(m_cells, [this](const Cell &cell) {
        return !cell.view || !cell.index.isValid() || cellAt(cell.index) != cell.view;
    });
    std::erase_if(m_containerButtons, [](const auto &button) { return !button; });
}

void PodController::dropCellsOutOfSight()
{
    const auto [first, last] = tableView().visibleRows();
    for (const Cell &cell : m_cells) {
        const bool inSight = cell.index.row() >= first && cell.index.row() <= last;
        if (!inSight && !cell.view->hasCheckedButton()) {
            tableView().setIndexWidget(cell.index, nullptr);
        }
    }
    forgetGoneCells();
}

void PodController::extendContextMenu(QMenu &menu)
{
    const int clicked = tableView().clickedRow();
    const int row = clicked >= 0 ? clicked : tableView().currentIndex().row();
    if (row < 0) {
        return;
    }
    const QModelIndex index = arrangedObjects().index(row, containersColumn);
    ensureCell(index);
    const TableButtonView *view = cellAt(index);
    if (!view) {
        return;
    }
    QMenu *containers = menu.addMenu(QStringLiteral("Containers"));
    for (ContainerButton *button : view->buttons()) {
        QAction *action = containers->addAction(button->text());
        action->setCheckable(true);
        action->setChecked(button->isChecked());
        connect(action, &QAction::triggered, button, &QPushButton::click);
    }
}

} // namespace tidewright
