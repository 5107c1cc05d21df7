// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/StorageClassController.h"

#include "resources/kinds/StorageClass.h"

#include <QMenu>

namespace tidewright {

namespace {

const StorageClass &classOf(const Row &row)
{
    return static_cast<const StorageClass &>(*row);
}

} // namespace

StorageClassController::StorageClassController(WindowState &window, QWidget *parent)
    : CommandTable(storageClassKind(), window, parent)
{
}

QStringList StorageClassController::defaults() const
{
    QStringList names;
    for (const Row &row : tableItems()) {
        if (classOf(row).isDefault) {
            names.append(row->name);
        }
    }
    return names;
}

QStringList StorageClassController::annotateLine(const QString &name, bool isDefault) const
{
    const QLatin1String value(isDefault ? "=true" : "=false");
    QStringList line = commandLine({QStringLiteral("annotate")}, {});
    line += {QStringLiteral("--overwrite"), QStringLiteral("storageclass"), name,
        QLatin1String("storageclass.kubernetes.io/is-default-class") + value};
    for (const Row &row : tableItems()) {
        if (row->name == name && classOf(row).hasOldMark) {
            line += QLatin1String("storageclass.beta.kubernetes.io/is-default-class") + value;
        }
    }
    return line;
}

void StorageClassController::setAsDefault()
{
    const auto object = onlyChosen();
    if (!object) {
        return;
    }
    const QString name = object->name;
    QStringList former = defaults();
    former.removeAll(name);
    // The former first, as two defaults at a time are an error to some versions of Kubernetes.
    std::vector<QStringList> lines;
    for (const QString &other : std::as_const(former)) {
        lines.push_back(annotateLine(other, false));
    }
    lines.push_back(annotateLine(name, true));
    QString question
        = QStringLiteral("Are you sure you want to make \"%1\" the default storage class?").arg(name);
    if (!former.isEmpty()) {
        question += QStringLiteral(" \"%1\" is not the default any more then.")
                        .arg(former.join(QLatin1String("\", \"")));
    }
    runOnRows({QStringLiteral("Confirm Default Class"), question, QStringLiteral("Set as Default"),
        QStringLiteral("The default class was not changed"), {*object}, lines});
}

void StorageClassController::extendContextMenu(QMenu &menu)
{
    const auto object = onlyChosen();
    enableFor(Deed::Change,
        *menu.addAction(QStringLiteral("Set as Default…"), this, &StorageClassController::setAsDefault),
        object && defaults() != QStringList(object->name));
}

} // namespace tidewright
