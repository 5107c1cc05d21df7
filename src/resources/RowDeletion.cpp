// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/RowDeletion.h"

#include "resources/ClusterChange.h"
#include "resources/Confirmation.h"

#include <QLocale>

namespace tidewright {

namespace {

const auto nothingDeleted = QStringLiteral("Nothing was deleted");

/// What the user saw and agreed to.
struct Deletion
{
    ChangePlace place;
    QString resourceName;
    QStringList names;
    std::function<void()> finished;
};

void deleteNow(const Deletion &deletion)
{
    WindowState &window = *deletion.place.window;
    if (!deletion.place.isStillShown()) {
        refuseMovedChange(window, nothingDeleted);
        return;
    }
    const QStringList command{QStringLiteral("kubectl"), QStringLiteral("delete"), deletion.resourceName};
    runChange(window, command + deletion.names, deletion.finished);
}

void deleteOnceAgreed(const Deletion &deletion)
{
    if (!deletion.place.window) {
        return;
    }
    deletion.place.window->agreeWithKubeConfig([deletion](bool agreed) {
        if (agreed && deletion.place.window) {
            deleteNow(deletion);
        }
    });
}

/// Where the objects are, and which when there are several: the first few by name.
QWidget *detailsOf(const Deletion &deletion, const ResourceKind &kind)
{
    constexpr qsizetype namesShown = 10;
    QString text;
    if (deletion.names.size() > 1) {
        text = deletion.names.first(qMin(namesShown, deletion.names.size())).join(QLatin1Char('\n'));
        if (deletion.names.size() > namesShown) {
            text += QStringLiteral("\nand %1 more")
                        .arg(QLocale().toString(deletion.names.size() - namesShown));
        }
        text += QLatin1String("\n\n");
    }
    return confirmationDetails(text + deletion.place.text(kind));
}

} // namespace

void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind, const QStringList &names,
    std::function<void()> finished)
{
    if (names.isEmpty()) {
        return;
    }
    if (const QString reason = whyNotByName(kind, names, window.currentNamespace()); !reason.isEmpty()) {
        refuseChange(window, nothingDeleted, reason);
        return;
    }
    const QString &noun = kind.humanReadableResourceName;
    const QString message = names.size() == 1
        ? QStringLiteral("Are you sure you want to delete the %1 \"%2\"?").arg(noun, names.first())
        : QStringLiteral("Are you sure you want to delete %1 %2s?").arg(names.size()).arg(noun);
    const Deletion deletion{ChangePlace(window), kind.resourceName, names, std::move(finished)};
    showConfirmation(&view, QStringLiteral("Confirm Deletion"), message, QStringLiteral("Delete"),
        QStringLiteral("Cancel"), detailsOf(deletion, kind), [deletion](bool confirmed) {
            if (confirmed) {
                deleteOnceAgreed(deletion);
            }
        });
}

} // namespace tidewright
