// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/RowDeletion.h"

#include "resources/changes/ChangeQuestion.h"

#include <QLocale>

namespace tidewright {

namespace {

const auto nothingDeleted = QStringLiteral("Nothing was deleted");

/// Where the objects are, and which when there are several: the first few by name.
QWidget *detailsOf(const QStringList &names, const ChangePlace &place, const ResourceKind &kind)
{
    constexpr qsizetype namesShown = 10;
    QString text;
    if (names.size() > 1) {
        text = names.first(qMin(namesShown, names.size())).join(QLatin1Char('\n'));
        if (names.size() > namesShown) {
            text += QStringLiteral("\nand %1 more").arg(QLocale().toString(names.size() - namesShown));
        }
        text += QLatin1String("\n\n");
    }
    return confirmationDetails(text + place.text(kind));
}

} // namespace

void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind, const QStringList &names,
    std::function<void()> finished)
{
    if (names.isEmpty()) {
        return;
    }
    QString reason = changeObstacle(window);
    if (reason.isEmpty()) {
        reason = whyNotByName(kind, names, window.currentNamespace());
    }
    if (!reason.isEmpty()) {
        refuseChange(window, nothingDeleted, reason);
        return;
    }
    const QString &noun = kind.humanReadableResourceName;
    const QString message = names.size() == 1
        ? QStringLiteral("Are you sure you want to delete the %1 \"%2\"?").arg(noun, names.first())
        : QStringLiteral("Are you sure you want to delete %1 %2s?").arg(names.size()).arg(noun);
    const ChangePlace place(window);
    const QStringList command{QStringLiteral("kubectl"), QStringLiteral("delete"), kind.resourceName};
    confirmChange(&view, place, QStringLiteral("Confirm Deletion"), message, QStringLiteral("Delete"),
        detailsOf(names, place, kind),
        [place, command = command + names, finished = std::move(finished)](bool confirmed) {
            if (confirmed) {
                runChange(place, command, nothingDeleted, finished);
            }
        });
}

} // namespace tidewright
