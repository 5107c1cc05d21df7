// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/table/PodController.h"

#include "platform/desktop/Diagnostics.h"
#include "platform/text/DisplayText.h"
#include "pods/table/ContainerButton.h"
#include "pods/table/PaddedTextField.h"
#include "pods/table/Pod.h"
#include "pods/table/TableButtonView.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/controllers/VisibleCells.h"
#include "resources/table/ResourceTableView.h"

#include <QMenu>

#include <vector>

namespace tidewright {

namespace {

constexpr QLatin1String containersColumn("containers");

const Pod &podAt(const ArrangingModel &model, int row)
{
    return static_cast<const Pod &>(*model.arrangedRow(row));
}

/// Behind the commands for a pod's containers, of which there may be thousands.
void addOthers(QMenu &menu, qsizetype containers)
{
    if (const QString others = TableButtonView::othersText(containers); !others.isEmpty()) {
        menu.addAction(others)->setEnabled(false);
    }
}

} // namespace

PodController::PodController(WindowState &window, QWidget *parent)
    : SharedContentViewController(podKind(), window, parent)
    , m_cells(new VisibleCells(
          tableView(), kind().indexOf(containersColumn),
          [this](const QModelIndex &index) { return ensureCell(index); },
          [](const QWidget &cell) { return static_cast<const TableButtonView &>(cell).hasCheckedButton(); }))
{
    tableView().setItemDelegateForColumn(
        kind().indexOf(QLatin1String("name")), new PaddedTextField(&tableView()));
    connect(m_cells, &VisibleCells::cellsForgotten, this, [this] {
        if (std::erase_if(m_containerButtons, [](const auto &button) { return !button; }) > 0) {
            Q_EMIT selectedContainersChanged(); // one that was chosen may be among them
        }
    });
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
            const auto &[nameSpace, pod] = button->pod();
            pairs.push_back({pod, button->container(),
                nameSpace.isEmpty() ? kubeSplitViewController().currentNamespace() : nameSpace});
        }
    }
    return pairs;
}

QString PodController::viewLogsObstacle() const
{
    return chosenCount() == 0 && selectedContainerPairs().empty()
        ? tr("Select a pod or choose a container first.")
        : QString();
}

QString PodController::copyFileObstacle() const
{
    const auto chosen = selectedContainerPairs().size();
    return chosen == 1 ? QString()
        : chosen == 0  ? tr("Choose a container in the row of a pod first.")
                       : tr("Choose a single container.");
}

std::vector<ContainerPair> PodController::takeSelectedContainerPairs()
{
    std::vector<ContainerPair> pairs = selectedContainerPairs();
    for (ContainerButton *button : containerButtons()) {
        button->setChecked(false);
    }
    Q_EMIT selectedContainersChanged();
    return pairs;
}

void PodController::viewLogs()
{
    std::vector<ContainerPair> containers = selectedContainerPairs();
    ObjectNames named;
    for (const auto &[pod, container, nameSpace] : containers) {
        named += {{nameSpace, pod}, {nameSpace, container}};
    }
    if (containers.empty()) {
        named = tableView().clickedRowIsSelected() ? selectedObjects() : chosenObjects();
        for (const auto &[nameSpace, pod] : std::as_const(named)) {
            containers.push_back({pod, allContainers, nameSpace});
        }
    }
    if (!containers.empty() && canName(named, noLogs())) {
        takeSelectedContainerPairs();
        kubeSplitViewController().openLogs(containers, LogScope::Following);
    }
}

void PodController::viewPreviousLogs(const ContainerPair &container)
{
    if (canName(
            {{container.nameSpace, container.pod}, {container.nameSpace, container.container}}, noLogs())) {
        kubeSplitViewController().openLogs({container}, LogScope::Previous);
    }
}

/// The chosen one, or the first of the only selected pod: kubectl's own choice, too.
std::optional<ContainerPair> PodController::containerForShell() const
{
    const std::vector<ContainerPair> chosen = selectedContainerPairs();
    if (!chosen.empty()) {
        return chosen.size() == 1 ? std::optional(chosen.front()) : std::nullopt;
    }
    const auto rows = tableView().selectedRowsInOrder();
    if (rows.size() != 1 || podAt(arrangedObjects(), rows.front()).containers.isEmpty()) {
        return std::nullopt;
    }
    const auto [nameSpace, pod] = objectAt(rows.front());
    return ContainerPair{pod, podAt(arrangedObjects(), rows.front()).containers.first(), nameSpace};
}

QString PodController::openShellObstacle() const
{
    return containerForShell() ? QString() : tr("Choose a single container, or select a single pod.");
}

void PodController::openShell()
{
    if (const auto container = containerForShell()) {
        takeSelectedContainerPairs();
        openShellIn(*container);
    }
}

void PodController::openShellIn(const ContainerPair &container)
{
    static const QString notOpened = QStringLiteral("No shell was opened");
    const auto &[pod, name, nameSpace] = container;
    if (!canChange({{nameSpace, pod}, {nameSpace, name}}, notOpened)) {
        return;
    }
    const ChangePlace place(kubeSplitViewController());
    confirmWhereProtected(this, place.key(),
        {.title = tr("Confirm Shell"),
            .message = tr("Are you sure you want to open a shell in the container \"%1\" of the pod \"%2\"?")
                           .arg(name, pod),
            .yes = tr("Open Shell"),
            .accessory = confirmationDetails(place.text(kind(), nameSpace))},
        [self = QPointer(this), place, container](bool confirmed) {
            if (!self || !confirmed) {
                return;
            }
            if (place.isStillShown()) {
                place.window->openShell(container);
            } else {
                refuseMovedChange(self->kubeSplitViewController(), notOpened);
            }
        });
}

/// A command, or one for each container.
void PodController::addShellCommands(QMenu &menu, int row)
{
    const auto [nameSpace, pod] = objectAt(row);
    const QStringList containers = podAt(arrangedObjects(), row).containers;
    QMenu *target = containers.size() > 1 ? menu.addMenu(tr("Open Shell")) : &menu;
    target->setToolTipsVisible(true);
    for (const QString &name : containers.first(qMin(TableButtonView::mostButtons, containers.size()))) {
        QAction *action = target->addAction(
            containers.size() > 1 ? display_text::withoutMnemonics(name) : tr("Open Shell"), this,
            [this, container = ContainerPair{pod, name, nameSpace}] { openShellIn(container); });
        enableFor(Deed::OpenShell, *action, true);
    }
    addOthers(*target, containers.size());
}

void PodController::rowsChanged()
{
    // A pod out of sight may have got other containers: what was chosen there is no longer what it seems.
    m_cells->update();
    Q_EMIT selectedContainersChanged();
}

void PodController::selectContainer(ContainerButton *button)
{
    writeDiagnostic(QLatin1String("select container ") + button->accessibleName());
    Q_EMIT selectedContainersChanged();
}

TableButtonView *PodController::cellAt(const QModelIndex &index) const
{
    return qobject_cast<TableButtonView *>(m_cells->at(index));
}

bool PodController::ensureCell(const QModelIndex &index)
{
    const Pod &pod = podAt(arrangedObjects(), index.row());
    const ObjectName object{pod.nameSpace, pod.name};
    const TableButtonView *present = cellAt(index);
    if (present ? present->pod() == object && present->containers() == pod.containers
                : pod.containers.isEmpty()) {
        return false;
    }
    auto *built = new TableButtonView(object, pod.containers, tableView().viewport());
    for (ContainerButton *button : built->buttons()) {
        connect(button, &QPushButton::clicked, this, [this, button] { selectContainer(button); });
        m_containerButtons.emplace_back(button);
    }
    if (present) {
        for (ContainerButton *replaced : present->buttons()) {
            replaced->setChecked(false); // it lives on for a moment
        }
    }
    m_cells->put(index, built); // ends the replaced cell
    return true;
}

void PodController::extendContextMenu(QMenu &menu)
{
    const int clicked = tableView().clickedRow();
    const int row = clicked >= 0 ? clicked : tableView().currentIndex().row();
    if (row < 0) {
        return;
    }
    addShellCommands(menu, row);
    const QModelIndex index = arrangedObjects().index(row, kind().indexOf(containersColumn));
    m_cells->ensure(index);
    const TableButtonView *view = cellAt(index);
    if (!view) {
        return;
    }
    QMenu *previous = menu.addMenu(tr("View Previous Logs"));
    previous->setToolTipsVisible(true);
    QMenu *containers = menu.addMenu(QStringLiteral("Containers"));
    for (ContainerButton *button : view->buttons()) {
        const QString title = display_text::withoutMnemonics(button->container());
        QAction *log
            = previous->addAction(title, this, [this, pod = button->pod(), container = button->container()] {
                  viewPreviousLogs({pod.name, container, pod.nameSpace});
              });
        enableFor(Deed::ReadLogs, *log, true);
        QAction *action = containers->addAction(title);
        action->setCheckable(true);
        action->setChecked(button->isChecked());
        connect(action, &QAction::triggered, button, &QPushButton::click);
    }
    addOthers(*previous, view->containers().size());
    addOthers(*containers, view->containers().size());
}

} // namespace tidewright
