// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/CronJobController.h"

#include "platform/text/RandomString.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/kinds/CronJob.h"

#include <QMenu>

namespace tidewright {

namespace {

const auto nothingRun = QStringLiteral("Nothing was run");

} // namespace

CronJobController::CronJobController(WindowState &window, QWidget *parent)
    : SharedContentViewController(cronJobKind(), window, parent)
{
}

QString CronJobController::runObstacle() const
{
    switch (chosenCount()) {
    case 0:
        return tr("Select a cron job first.");
    case 1:
        return {};
    default:
        return tr("Select a single cron job.");
    }
}

void CronJobController::runCronJobNow()
{
    const ObjectNames objects = chosenObjects();
    if (objects.isEmpty() || !canChange(objects.first(1), nothingRun)) {
        return;
    }
    const auto &[nameSpace, name] = objects.first();
    WindowState &window = kubeSplitViewController();
    const QStringList command
        = QStringList{QStringLiteral("kubectl"), QStringLiteral("create"), QStringLiteral("job")}
        + placeArguments(window.currentContext(), nameSpace)
        + QStringList{QLatin1String("--from=cronjob/") + name, manualJobName(name)};
    const ChangePlace place(window);
    confirmWhereProtected(this, place.key(),
        {.title = QStringLiteral("Confirm Run"),
            .message = QStringLiteral("Are you sure you want to run the cron job \"%1\" now?").arg(name),
            .yes = QStringLiteral("Run Now"),
            .accessory = confirmationDetails(place.text(kind(), nameSpace))},
        [place, command](bool confirmed) {
            if (confirmed) {
                runChange(place, command, nothingRun);
            }
        });
}

void CronJobController::extendContextMenu(QMenu &menu)
{
    QAction *action = menu.addAction(QStringLiteral("Run Now"), this, &CronJobController::runCronJobNow);
    enableFor(Deed::RunJob, *action, runObstacle().isEmpty());
}

QString manualJobName(const QString &cronJob)
{
    constexpr qsizetype kept = 32;
    constexpr int randomCharacters = 5;
    const QString middle = cronJob.size() > kept ? cronJob.left(kept) + QLatin1String("--") : cronJob;
    return QLatin1String("manually-run-") + middle + QLatin1Char('-') + randomString(randomCharacters);
}

} // namespace tidewright
