// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/ClusterChange.h"

#include "platform/DisplayText.h"
#include "platform/MainQueue.h"

#include <QLabel>

namespace tidewright {

ChangePlace::ChangePlace(WindowState &shown)
    : window(&shown)
    , context(shown.currentContext())
    , nameSpace(shown.currentNamespace())
{
}

bool ChangePlace::isStillShown() const
{
    return window && window->currentContext() == context && window->currentNamespace() == nameSpace;
}

QString ChangePlace::text(const ResourceKind &kind) const
{
    return kind.namespaced ? text() : QStringLiteral("Context: %1").arg(context);
}

QString ChangePlace::text() const
{
    return placeText(context, nameSpace);
}

QString placeText(const QString &context, const QString &nameSpace)
{
    return QStringLiteral("Context: %1\nNamespace: %2").arg(context, nameSpace);
}

QString namespaceObstacle(const ResourceKind &kind, const QString &nameSpace)
{
    if (!kind.namespaced || nameSpace != allNamespaces) {
        return {};
    }
    return QStringLiteral(
        "choose a namespace first. While all namespaces are shown, kubectl cannot tell which of "
        "them a %1 is in.")
        .arg(kind.humanReadableResourceName);
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

QString whyNotByName(const ResourceKind &kind, const QStringList &names, const QString &nameSpace)
{
    const QString reason = namespaceObstacle(kind, nameSpace);
    return reason.isEmpty() ? nameObstacle(names) : reason;
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

void runChange(WindowState &window, const QStringList &command, std::function<void()> finished)
{
    window.kubeCtl().makeShell()->runAsync(command, true, nullptr,
        [finished = std::move(finished)](const ShellResult &) { mainQueue().post(finished); });
}

QWidget *confirmationDetails(const QString &text)
{
    auto *label = new QLabel(display_text::clean(text));
    label->setTextFormat(Qt::PlainText);
    label->setContentsMargins(2, 10, 12, 8);
    return label;
}

} // namespace tidewright
