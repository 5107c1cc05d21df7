// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/ClusterChange.h"

#include "core/CommandGate.h"
#include "platform/desktop/Notifications.h"
#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"

#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QUuid>

#include <algorithm>

namespace tidewright {

ChangePlace::ChangePlace(WindowState &shown)
    : window(&shown)
    , context(shown.currentContext())
    , nameSpace(shown.currentNamespace())
    , kubeConfig(shown.kubeConfigPath())
{
}

bool ChangePlace::isStillShown() const
{
    return window && window->currentContext() == context && window->currentNamespace() == nameSpace;
}

QString ChangePlace::text(const ResourceKind &kind) const
{
    return text(kind, nameSpace);
}

QString ChangePlace::text(const ResourceKind &kind, const QString &objectNamespace) const
{
    return placeText(context, kind.namespaced ? objectNamespace : QString(), kubeConfig);
}

QString ChangePlace::text() const
{
    return placeText(context, nameSpace, kubeConfig);
}

QString placeText(const QString &context, const QString &nameSpace, const QString &configPath)
{
    QStringList lines{QLatin1String("Context: ") + context};
    if (!nameSpace.isEmpty()) {
        lines.append(QLatin1String("Namespace: ") + nameSpace);
    }
    if (const QString files = kubeConfigFiles(configPath); files != kubeConfigFiles({})) {
        lines.append(QLatin1String("Kubeconfig: ") + files);
    }
    return lines.join(QLatin1Char('\n'));
}

QString nameObstacle(const QStringList &names)
{
    for (const QString &name : names) {
        if (name.startsWith(QLatin1Char('-'))) {
            return QStringLiteral("kubectl would take the name \"%1\" for an option.").arg(name);
        }
    }
    return {};
}

QString whyNotByName(const ResourceKind &kind, const ObjectNames &objects)
{
    QStringList names;
    for (const ObjectName &object : objects) {
        names.append(object.name);
        if (!kind.namespaced) {
            continue;
        }
        if (object.nameSpace == allNamespaces) {
            return QStringLiteral("it is not known which namespace the %1 \"%2\" is in.")
                .arg(kind.humanReadableResourceName, object.name);
        }
        names.append(object.nameSpace);
    }
    return nameObstacle(names);
}

ContextKey shownContext(const WindowState &window)
{
    return {window.kubeConfigPath(), window.currentContext()};
}

QString changeObstacle(const WindowState &window)
{
    return readOnlyReason(shownContext(window));
}

bool allows(WindowState &window, const QString &notDone, const QString &obstacle)
{
    if (!obstacle.isEmpty()) {
        refuseChange(window, notDone, obstacle);
    }
    return obstacle.isEmpty();
}

bool allowsNames(
    WindowState &window, const ResourceKind &kind, const ObjectNames &objects, const QString &notDone)
{
    return allows(window, notDone, whyNotByName(kind, objects));
}

bool allowsChange(
    WindowState &window, const ResourceKind &kind, const ObjectNames &objects, const QString &notDone)
{
    return allows(window, notDone, changeObstacle(window)) && allowsNames(window, kind, objects, notDone);
}

bool allowsStart(const ChangePlace &place, const QString &notDone, const QString &obstacle)
{
    if (!place.window) {
        refuseUnseenChange(place, notDone, obstacle);
        return false;
    }
    if (!allows(*place.window, notDone, obstacle)) {
        return false;
    }
    if (!place.isStillShown()) {
        refuseMovedChange(*place.window, notDone);
        return false;
    }
    return true;
}

void refuseChange(WindowState &window, const QString &notDone, const QString &reason)
{
    postConsoleEntry(
        window.console(), QString(), QString(), makeConsoleError(notDone + QLatin1String(": ") + reason));
}

void refuseMovedChange(WindowState &window, const QString &notDone)
{
    refuseChange(window, notDone, QStringLiteral("the window shows another context or namespace by now."));
}

void refuseUnseenChange(const ChangePlace &place, const QString &notDone, const QString &reason)
{
    const QString text = notDone + QLatin1String(": ") + reason;
    postConsoleEntry(nullptr, QString(), QString(), makeConsoleError(text));
    deliverNotification({QUuid::createUuid().toString(QUuid::WithoutBraces),
        QStringLiteral("A change was not made"), place.text(), text});
}

namespace {

/// A window that was closed shows no entry: the user learns elsewhere what has become of the change.
void notifyOutcome(const ChangePlace &place, const QString &done, const QString &failure)
{
    constexpr qsizetype longestShown = 1000;
    deliverNotification({QUuid::createUuid().toString(QUuid::WithoutBraces),
        failure.isEmpty() ? QStringLiteral("A change is done") : QStringLiteral("A change has failed"),
        place.text(), display_text::shortened(done, longestShown) + QLatin1Char('\n') + failure});
}

/// A change under way: one command line after the other, all with the shell of the first.
struct Series
{
    ChangePlace place;
    ChangeCommands commands;
    std::function<void()> finished;
    QPointer<Console> console;
    std::shared_ptr<Shell> shell;
    QString destination; ///< where the context led at first
    qsizetype started = 0;
    qsizetype failed = 0;
    QString failure = {}; ///< of the last one that failed, or why no more was started

    qsizetype size() const { return qsizetype(commands.lines.size()); }
    bool goesOnAfter(const ShellResult &result);
    QString outcome() const;
    void end() const;
};

/// A kubectl keeps the place that it has read once; the next one reads the user's files again. Blocks.
bool Series::goesOnAfter(const ShellResult &result)
{
    const bool isDone = result.exitStatus == 0 && !result.signal;
    if (!isDone) {
        ++failed;
        failure = result.failure();
    }
    if (started == size() || (!isDone && !(commands.goesOnAfter && commands.goesOnAfter(result)))) {
        return false;
    }
    QString unread;
    const auto now = readKubeConfig(*shell, unread);
    if (now && now->destination(place.context) == destination) {
        return true;
    }
    failure = now ? QStringLiteral("The context %1 leads elsewhere by now.").arg(place.context) : unread;
    return false;
}

QString Series::outcome() const
{
    const QString all = QStringLiteral("%1 of %2 command lines were run, %3 failed.")
                            .arg(QString::number(started), QString::number(size()), QString::number(failed));
    return started == size() ? all : QString(all + QLatin1String(" The others were not run: ") + failure);
}

void Series::end() const
{
    const bool isSingle = size() == 1;
    if (!isSingle) {
        const bool isWhole = started == size();
        postConsoleEntry(console, QString(), isWhole ? outcome() : QString(),
            isWhole ? std::nullopt : std::optional(makeConsoleError(outcome())));
    }
    if (!place.window) {
        notifyOutcome(place, isSingle ? commands.lines.front().join(QLatin1Char(' ')) : outcome(), failure);
    } else if (finished) {
        finished();
    }
}

void runNext(const std::shared_ptr<Series> &series)
{
    series->shell->runToldAsync(series->commands.lines.at(std::size_t(series->started++)), series->console,
        [series](const ShellResult &result) {
            const bool goesOn = series->goesOnAfter(result);
            mainQueue().post([series, goesOn] {
                if (goesOn) {
                    runNext(series);
                } else {
                    series->end();
                }
            });
        });
}

} // namespace

void runChange(const ChangePlace &place, const QStringList &command, const QString &notDone,
    std::function<void()> finished)
{
    runChange(place, ChangeCommands{{command}}, notDone, std::move(finished));
}

void runChange(const ChangePlace &place, const ChangeCommands &commands, const QString &notDone,
    std::function<void()> finished)
{
    if (!place.window || commands.lines.empty()) {
        return;
    }
    place.window->whenSettled(
        [place, commands, notDone, finished = std::move(finished)](const QString &obstacle) {
            if (allowsStart(place, notDone, obstacle)) {
                const KubeCtl &kubeCtl = place.window->kubeCtl();
                runNext(std::make_shared<Series>(Series{place, commands, finished, place.window->console(),
                    kubeCtl.makeShell(), kubeCtl.contents().destination(place.context)}));
            } else if (place.window && finished) {
                finished();
            }
        });
}

QWidget *confirmationDetails(const QString &text)
{
    constexpr int mostLines = 18;
    QStringList lines = text.split(QLatin1Char('\n'));
    std::transform(lines.begin(), lines.end(), lines.begin(), display_text::name);
    auto *label = new QLabel(lines.join(QLatin1Char('\n')));
    label->setTextFormat(Qt::PlainText);
    label->setContentsMargins(2, 10, 12, 8);
    if (lines.size() <= mostLines) {
        return label;
    }
    auto *scroller = new QScrollArea;
    scroller->setWidget(label);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setFixedHeight(label->fontMetrics().lineSpacing() * mostLines);
    constexpr int widest = 640;
    scroller->setMinimumWidth(
        std::min(widest, label->sizeHint().width() + scroller->verticalScrollBar()->sizeHint().width()));
    return scroller;
}

} // namespace tidewright
