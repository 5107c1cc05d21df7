// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/RowEdit.h"

#include "resources/changes/ChangeQuestion.h"

#include <QWidget>

namespace tidewright {

void confirmAndEdit(QWidget &view, WindowState &window, const ResourceKind &kind, const ObjectName &object,
    std::function<void()> finished)
{
    const auto nothingEdited = QStringLiteral("Nothing was edited");
    if (!allowsNames(window, kind, {object}, nothingEdited)) {
        return;
    }
    const QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("edit"), QStringLiteral("-n"),
        object.nameSpace, kind.resourceName, object.name, QStringLiteral("-o"), QStringLiteral("yaml")};
    const ChangePlace place(window);
    confirmWhereProtected(&view, place.key(),
        {.title = QStringLiteral("Confirm Edit"),
            .message = QStringLiteral("Are you sure you want to edit the %1 \"%2\"?")
                           .arg(kind.humanReadableResourceName, object.name),
            .yes = QStringLiteral("Edit"),
            .accessory = confirmationDetails(place.text(kind, object.nameSpace))},
        [shown = QPointer(&view), place, arguments, nothingEdited, finished = std::move(finished)](
            bool confirmed) {
            if (!shown || !place.window || !confirmed) {
                return;
            }
            if (place.isStillShown()) {
                place.window->startExternalEdit(arguments, finished);
            } else {
                refuseMovedChange(*place.window, nothingEdited);
            }
        });
}

} // namespace tidewright
