// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/NodeController.h"

#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/controllers/NodeDrain.h"
#include "resources/kinds/Node.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QMenu>
#include <QVBoxLayout>

#include <algorithm>

namespace tidewright {

namespace {

const auto nothingDrained = QStringLiteral("Nothing was drained");

/// The choices of a drain, above where it goes. Without one that a pod needs, kubectl evicts none at all.
class DrainChoices
{
    Q_DECLARE_TR_FUNCTIONS(DrainChoices)
public:
    explicit DrainChoices(const DrainPlan &plan, const QString &place)
        : form(new QWidget)
    {
        auto *layout = new QVBoxLayout(form);
        layout->setContentsMargins(0, 0, 0, 0);
        const auto add = [layout](const QString &text, const QStringList &pods) {
            auto *box = pods.isEmpty() ? nullptr : new QCheckBox(text.arg(pods.size()));
            if (box) {
                box->setToolTip(display_text::toolTip(pods.join(QLatin1Char('\n'))));
                layout->addWidget(box);
            }
            return box;
        };
        localData = add(tr("Delete the local data of %1 of them too; else none leaves"), plan.withLocalData);
        unmanaged = add(tr("Delete %1 that nothing brings back; else none leaves"), plan.unmanaged);
        layout->addWidget(confirmationDetails(place));
    }

    QStringList options() const
    {
        QStringList result{QStringLiteral("--ignore-daemonsets"), QStringLiteral("--timeout=5m")};
        if (localData && localData->isChecked()) {
            result += QStringLiteral("--delete-emptydir-data");
        }
        if (unmanaged && unmanaged->isChecked()) {
            result += QStringLiteral("--force");
        }
        return result;
    }

    QWidget *form; ///< the question owns it
    QPointer<QCheckBox> localData;
    QPointer<QCheckBox> unmanaged;
};

} // namespace

NodeController::NodeController(WindowState &window, QWidget *parent)
    : CommandTable(nodeKind(), window, parent)
{
}

void NodeController::cordon()
{
    const ObjectNames objects = chosenObjects();
    runOnRows({QStringLiteral("Confirm Cordon"),
        QStringLiteral("Are you sure you want to close %1 to new pods?").arg(nounFor(objects)),
        QStringLiteral("Cordon"), QStringLiteral("Nothing was cordoned"), objects,
        commandLines({QStringLiteral("cordon")}, {}, objects), false});
}

void NodeController::uncordon()
{
    const ObjectNames objects = chosenObjects();
    runOnRows({QStringLiteral("Confirm Uncordon"),
        QStringLiteral("Are you sure you want to open %1 to new pods?").arg(nounFor(objects)),
        QStringLiteral("Uncordon"), QStringLiteral("Nothing was uncordoned"), objects,
        commandLines({QStringLiteral("uncordon")}, {}, objects), false});
}

void NodeController::drain()
{
    const auto object = onlyChosen();
    if (!object || !canChange({*object}, nothingDrained)) {
        return;
    }
    const QString name = object->name;
    WindowState &window = kubeSplitViewController();
    const ChangePlace place(window);
    setLoading(true);
    window.kubeCtl().makeShell()->runAsync(commandLine(DrainPlan::podsArguments(name), {}), false, nullptr,
        [self = QPointer(this), place, name](const ShellResult &result) {
            postToMain(self, [place, name, result](NodeController &table) {
                table.setLoading(false);
                if (const QString failure = result.failure(); !failure.isEmpty()) {
                    refuseChange(table.kubeSplitViewController(), nothingDrained,
                        QStringLiteral("its pods could not be listed. ") + failure);
                } else if (!place.isStillShown()) {
                    refuseMovedChange(table.kubeSplitViewController(), nothingDrained);
                } else {
                    table.confirmDrain(place, name, DrainPlan::read(result.output));
                }
            });
        });
}

void NodeController::confirmDrain(const ChangePlace &place, const QString &name, const DrainPlan &plan)
{
    const DrainChoices choices(plan, place.text(kind()));
    confirmChange(this, place,
        {.title = QStringLiteral("Confirm Drain"),
            .message = plan.text(name),
            .yes = QStringLiteral("Drain"),
            .accessory = choices.form},
        [place, choices, line = commandLine({QStringLiteral("drain")}, {}), name, done = reloadWhenDone()](
            bool confirmed) {
            if (confirmed) {
                runChange(place, line + choices.options() + QStringList(name), nothingDrained, done);
            }
        });
}

bool NodeController::areCordoned(const QStringList &names, bool cordoned) const
{
    return std::any_of(tableItems().cbegin(), tableItems().cend(), [&](const Row &row) {
        return names.contains(row->name) && static_cast<const Node &>(*row).isCordoned == cordoned;
    });
}

void NodeController::extendContextMenu(QMenu &menu)
{
    QStringList names;
    for (const ObjectName &object : chosenObjects()) {
        names.append(object.name);
    }
    enableFor(Deed::Change, *menu.addAction(QStringLiteral("Cordon"), this, &NodeController::cordon),
        areCordoned(names, false));
    enableFor(Deed::Change, *menu.addAction(QStringLiteral("Uncordon"), this, &NodeController::uncordon),
        areCordoned(names, true));
    enableFor(Deed::Change, *menu.addAction(QStringLiteral("Drain…"), this, &NodeController::drain),
        names.size() == 1);
}

} // namespace tidewright
