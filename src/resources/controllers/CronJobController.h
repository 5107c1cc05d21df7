// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/table/SharedContentViewController.h"

namespace tidewright {

/// The table of cron jobs, any of which can be run at once.
class CronJobController : public SharedContentViewController
{
    Q_OBJECT
public:
    explicit CronJobController(WindowState &window, QWidget *parent = nullptr);

    /// Why there is no cron job to run now: a sentence; empty when there is one.
    QString runObstacle() const;

public Q_SLOTS:
    /// Makes a job from the row that a context menu was opened on, else from the first selected one. The
    /// table of jobs shows it at its next refresh.
    void runCronJobNow();

protected:
    void extendContextMenu(QMenu &menu) override;
};

/// "manually-run-NAME-xxxxx" with five random characters; a name of more than 32 characters is cut there and
/// "--" put behind it, because job names have at most 63.
QString manualJobName(const QString &cronJob);

} // namespace tidewright
