// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/RowCommands.h"

#include "platform/text/DisplayText.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/changes/RowDeletion.h"
#include "resources/changes/RowEdit.h"
#include "resources/preview/PreviewPanel.h"
#include "resources/table/RelatedObjects.h"
#include "resources/table/ResourceTableView.h"
#include "resources/table/TablePreviews.h"

#include <QApplication>
#include <QClipboard>

namespace tidewright {

RowCommands::RowCommands(
    ResourceTableView &view, WindowState &window, const ResourceKind &kind, QWidget &table)
    : QObject(&table)
    , m_view(view)
    , m_window(window)
    , m_kind(kind)
    , m_table(table)
    , m_previews(std::make_unique<TablePreviews>(view, window, kind))
{
    connect(m_previews.get(), &TablePreviews::followed, this, &RowCommands::follow);
}

RowCommands::~RowCommands() = default;

ObjectNames RowCommands::chosenObjects() const
{
    return m_view.chosenObjects(m_window.currentNamespace());
}

void RowCommands::copyName()
{
    const ObjectNames objects = chosenObjects();
    if (objects.isEmpty()) {
        return;
    }
    const QString &name = objects.first().name;
    if (display_text::actsWhenPasted(name)) {
        refuseChange(m_window, QStringLiteral("The name was not copied"),
            tr("it holds control characters, which a terminal takes for keys."));
        return;
    }
    QApplication::clipboard()->setText(name);
}

void RowCommands::edit()
{
    const ObjectNames objects = chosenObjects();
    if (objects.isEmpty()) {
        return;
    }
    if (!changeObstacle(m_window).isEmpty()) {
        preview();
        return;
    }
    confirmAndEdit(m_table, m_window, m_kind, objects.first(), [self = QPointer(this)] {
        if (self) {
            Q_EMIT self->changed();
        }
    });
}

void RowCommands::remove()
{
    confirmAndDelete(m_table, m_window, m_kind, chosenObjects(), [self = QPointer(this)] {
        if (self) {
            Q_EMIT self->changed();
        }
    });
}

void RowCommands::preview()
{
    const int clicked = m_view.clickedRow();
    if (clicked >= 0 && !m_view.clickedRowIsSelected()) {
        m_view.selectRow(clicked);
    }
    PreviewPanel::shared().present(*m_previews, m_table);
}

void RowCommands::viewLogsOfAllPods()
{
    const ObjectNames objects = chosenObjects();
    if (objects.isEmpty() || !allowsNames(m_window, m_kind, objects, QStringLiteral("No logs were opened"))) {
        return;
    }
    std::vector<ContainerPair> workloads;
    for (const ObjectName &object : objects) {
        workloads.push_back(
            {m_kind.resourceName + QLatin1Char('/') + object.name, allContainers, object.nameSpace});
    }
    m_window.openLogs(workloads, LogScope::AllPods);
}

QString RowCommands::showPodsObstacle() const
{
    return podsObstacle(m_kind, m_view.chosenRowCount());
}

QString RowCommands::showOwnerObstacle() const
{
    return ownerObstacle(m_kind, m_view.chosenRowCount());
}

void RowCommands::showPods()
{
    if (showPodsObstacle().isEmpty()) {
        findPods(*this, m_window, m_kind, chosenObjects().first(),
            [this](const TableTarget &target) { Q_EMIT otherTableWanted(target); });
    }
}

void RowCommands::showOwner()
{
    if (showOwnerObstacle().isEmpty()) {
        findOwner(*this, m_window, m_kind, chosenObjects().first(),
            [this](const TableTarget &target) { Q_EMIT otherTableWanted(target); });
    }
}

void RowCommands::select(const ObjectName &object)
{
    m_wanted = object;
    selectWanted();
}

void RowCommands::selectWanted()
{
    const int row = m_wanted.name.isEmpty() ? -1 : m_view.arrangedObjects().rowOf(m_wanted);
    if (row < 0) {
        return;
    }
    m_wanted = {};
    const QModelIndex index = m_view.arrangedObjects().index(row, 0);
    // Not `selectRow`: that would add to the selection while the keys of a shortcut are held down.
    m_view.selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_view.scrollTo(index, QAbstractItemView::PositionAtCenter);
    PreviewPanel::shared().objectFound(*m_previews, m_table);
}

void RowCommands::giveUpWanted()
{
    if (const QString name = std::exchange(m_wanted, {}).name; !name.isEmpty()) {
        PreviewPanel::shared().objectMissing(name);
    }
}

void RowCommands::follow(const ObjectName &from, const Relation &relation)
{
    if (relation.object.name.isEmpty()) {
        findPods(*this, m_window, m_kind, from,
            [this](const TableTarget &target) { Q_EMIT otherTableWanted(target); });
    } else {
        Q_EMIT otherTableWanted({relation.kind, QString(), relation.object});
    }
}

void RowCommands::selectionChanged()
{
    PreviewPanel::shared().selectionChanged(*m_previews);
}

void RowCommands::forgetPreviews()
{
    m_previews->forget();
}

} // namespace tidewright
