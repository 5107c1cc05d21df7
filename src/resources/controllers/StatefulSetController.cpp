// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/StatefulSetController.h"

#include "resources/changes/ChangeQuestion.h"
#include "resources/kinds/StatefulSet.h"
#include "resources/table/ResourceTableView.h"

#include <QFormLayout>
#include <QMenu>
#include <QSpinBox>

#include <algorithm>

namespace tidewright {

namespace {

const auto nothingScaled = QStringLiteral("Nothing was scaled");

/// A field for a number, above where it goes.
QSpinBox *replicaField(QWidget &form, qint64 now, const QString &place)
{
    constexpr int most = 10'000;
    auto *field = new QSpinBox;
    field->setRange(0, most);
    field->setValue(static_cast<int>(std::clamp<qint64>(now, 0, most)));
    field->selectAll();
    field->setAccessibleName(QObject::tr("Replicas"));
    auto *layout = new QFormLayout(&form);
    layout->addRow(QObject::tr("Replicas:"), field);
    layout->addRow(confirmationDetails(place));
    form.setFocusProxy(field);
    return field;
}

} // namespace

StatefulSetController::StatefulSetController(WindowState &window, QWidget *parent)
    : WorkloadController(statefulSetKind(), QStringLiteral("statefulset/"), window, parent)
{
}

void StatefulSetController::scale()
{
    const auto object = onlyChosen();
    if (!object || !canChange({*object}, nothingScaled)) {
        return;
    }
    const int row = tableView().clickedRow() >= 0 ? tableView().clickedRow()
                                                  : tableView().selectedRowsInOrder().front();
    const qint64 now = static_cast<const StatefulSet &>(*arrangedObjects().arrangedRow(row)).wanted;
    const ChangePlace place(kubeSplitViewController());
    auto *form = new QWidget;
    const QPointer<QSpinBox> field = replicaField(*form, now, place.text(kind(), object->nameSpace));
    confirmChange(this, place,
        {.title = QStringLiteral("Confirm Scale"),
            .message = QStringLiteral("How many replicas is %1 to have? It has %2.")
                           .arg(nounFor({*object}), QString::number(now)),
            .yes = QStringLiteral("Scale Stateful Set"),
            .accessory = form},
        [self = QPointer(this), field, place, object = *object, now](bool confirmed) {
            if (self && field && confirmed && field->value() != now) {
                self->scaleTo(place, object, field->value());
            }
        });
}

void StatefulSetController::scaleTo(const ChangePlace &place, const ObjectName &object, int replicas)
{
    if (!place.isStillShown()) {
        refuseMovedChange(kubeSplitViewController(), nothingScaled);
        return;
    }
    QStringList line = commandLine({QStringLiteral("scale")}, object.nameSpace);
    line += QStringLiteral("--replicas=%1").arg(replicas);
    line += QLatin1String("statefulset/") + object.name;
    runChange(place, line, nothingScaled, reloadWhenDone());
}

void StatefulSetController::extendContextMenu(QMenu &menu)
{
    enableFor(Deed::Scale, *menu.addAction(QStringLiteral("Scale…"), this, &StatefulSetController::scale),
        chosenCount() == 1);
    WorkloadController::extendContextMenu(menu);
}

} // namespace tidewright
