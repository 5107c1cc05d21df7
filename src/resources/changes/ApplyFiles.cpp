// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/ApplyFiles.h"

#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/changes/DiffView.h"
#include "resources/changes/FileArguments.h"

#include <QLabel>
#include <QObject>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr qsizetype largestDiff = qsizetype(64) << 20;
constexpr qsizetype longestRemarks = 2000;
constexpr int mostRemarks = 8; // lines

/// One run of "Apply from File": what is compared is what is applied.
struct Application
{
    QPointer<QWidget> view;
    ChangePlace place;
    QStringList files; ///< their arguments
    std::function<void()> finished;

    QStringList command(const QString &verb) const
    {
        return QStringList{QStringLiteral("kubectl"), verb}
        + separatePlaceArguments(place.context, place.nameSpace) + files;
    }
    QString comparison() const { return QObject::tr("comparison with the cluster"); }
    void compare() const;
    void compared(const FileComparison &found) const;
    void ask(const FileComparison &found) const;
};

/// A diff, with the place and the remarks below it.
QWidget *details(const FileComparison &found, const QString &place)
{
    auto *both = new QWidget;
    auto *column = new QVBoxLayout(both);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(new DiffView(found.diff));
    QString text = place;
    if (!found.remarks.isEmpty()) {
        text = display_text::shortened(found.remarks, longestRemarks, mostRemarks) + QLatin1String("\n\n")
            + place;
    }
    column->addWidget(confirmationDetails(text));
    return both;
}

/// An own program for differences, which the user may have told kubectl of, could print anything.
void useUnifiedDiff(Shell &shell)
{
    shell.environment.insert("KUBECTL_EXTERNAL_DIFF", "diff -u -N");
}

void Application::compare() const
{
    WindowState &window = *place.window;
    const std::shared_ptr<Shell> shell = window.kubeCtl().makeShell();
    useUnifiedDiff(*shell);
    shell->outputLimit = largestDiff;
    if (window.console()) {
        window.console()->begin(comparison());
    }
    shell->runAsync(command(QStringLiteral("diff")), false, window.console(),
        [self = *this, console = QPointer(window.console())](const ShellResult &result) {
            mainQueue().post([self, console, found = FileComparison::read(result)] {
                if (console) {
                    console->end(self.comparison());
                }
                if (self.view && self.place.window) {
                    self.compared(found);
                }
            });
        });
}

void Application::compared(const FileComparison &found) const
{
    WindowState &window = *place.window;
    const CommandLine line{command(QStringLiteral("diff")), {}};
    const QString shown = display_text::withoutLineEnds(line.arguments.join(QLatin1Char(' ')));
    if (!found.failure.isEmpty()) {
        postConsoleEntry(window.console(), shown, QString(),
            makeConsoleError(nothingApplied() + QLatin1String(": ") + found.failure), line);
    } else if (found.diff.isEmpty()) {
        postConsoleEntry(window.console(), shown,
            nothingApplied() + QLatin1String(": ") + QObject::tr("the cluster has all of it already"),
            std::nullopt, line);
    } else if (!place.isStillShown()) {
        refuseMovedChange(window, nothingApplied());
    } else {
        postConsoleEntry(window.console(), shown,
            QObject::tr("Objects that would change: %1").arg(found.objectCount()), std::nullopt, line);
        ask(found);
    }
}

void Application::ask(const FileComparison &found) const
{
    const qsizetype count = found.objectCount();
    confirmChange(view, place,
        {.title = QObject::tr("Confirm Apply"),
            .message = count == 1
                ? QObject::tr("Are you sure you want to apply this change to one object?")
                : QObject::tr("Are you sure you want to apply these changes to %1 objects?").arg(count),
            .yes = QObject::tr("Apply"),
            .accessory = details(found, place.text())},
        [self = *this](bool confirmed) {
            if (confirmed) {
                runChange(self.place, self.command(QStringLiteral("apply")), nothingApplied(), self.finished);
            }
        });
}

} // namespace

qsizetype FileComparison::objectCount() const
{
    return diff.count("\ndiff ") + (diff.startsWith("diff ") ? 1 : 0);
}

FileComparison FileComparison::read(const ShellResult &result)
{
    const bool hasEndedItself = result.exitStatus.has_value() && !result.signal;
    const bool isSame = hasEndedItself && *result.exitStatus == 0 && result.output.isEmpty();
    const bool differs = hasEndedItself && *result.exitStatus == 1 && result.output.startsWith("diff ");
    if (isSame || differs) {
        return {result.output, result.error.value_or(QString()), {}};
    }
    const QString reason = result.failure();
    return {{}, {}, reason.isEmpty() ? QObject::tr("kubectl diff printed what is no comparison.") : reason};
}

QString nothingApplied()
{
    return QObject::tr("Nothing was applied");
}

bool canApplyIn(WindowState &window)
{
    return canTakeFilesIn(window, nothingApplied());
}

void applyFiles(
    QWidget &view, const ChangePlace &place, const QStringList &paths, std::function<void()> finished)
{
    if (paths.isEmpty() || !place.window || !canApplyIn(*place.window)) {
        return;
    }
    const auto files = fileArguments(*place.window, paths, nothingApplied());
    if (!files) {
        return;
    }
    place.window->whenSettled(
        [application = Application{&view, place, *files, std::move(finished)}](const QString &obstacle) {
            if (allowsStart(application.place, nothingApplied(), obstacle)) {
                application.compare();
            }
        });
}

} // namespace tidewright
