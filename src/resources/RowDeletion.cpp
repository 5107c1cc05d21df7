// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/RowDeletion.h"

#include "platform/MainQueue.h"
#include "resources/Confirmation.h"

#include <QPointer>

namespace tidewright {

namespace {

/// What the user saw and agreed to.
struct Deletion
{
    QPointer<WindowState> window;
    QString resourceName;
    QString noun;
    bool namespaced = true;
    QStringList names;
    QString context;
    QString nameSpace;
    std::function<void()> finished;
};

void refuse(WindowState &window, const QString &reason)
{
    postConsoleEntry(window.console(), QString(), QString(),
        makeConsoleError(QStringLiteral("Nothing was deleted: ") + reason));
}

void deleteNow(const Deletion &deletion)
{
    WindowState &window = *deletion.window;
    if (window.currentContext() != deletion.context || window.currentNamespace() != deletion.nameSpace) {
        refuse(window, QStringLiteral("the window shows another context or namespace by now."));
        return;
    }
    const QStringList command{QStringLiteral("kubectl"), QStringLiteral("delete"), deletion.resourceName};
    window.kubeCtl().makeShell()->runAsync(command + deletion.names, true, nullptr,
        [finished = deletion.finished](const ShellResult &) { mainQueue().post(finished); });
}

void deleteOnceAgreed(const Deletion &deletion)
{
    if (!deletion.window) {
        return;
    }
    if (deletion.namespaced && deletion.nameSpace == allNamespaces) {
        refuse(*deletion.window,
            QStringLiteral("choose a namespace first. While all namespaces are shown, kubectl cannot tell which of "
                           "them a %1 is in.")
                .arg(deletion.noun));
        return;
    }
    for (const QString &name : deletion.names) {
        if (name.startsWith(QLatin1Char('-'))) {
            refuse(*deletion.window, QStringLiteral("kubectl would take the name \"%1\" for an option.").arg(name));
            return;
        }
    }
    deletion.window->agreeWithKubeConfig([deletion](bool agreed) {
        if (agreed && deletion.window) {
            deleteNow(deletion);
        }
    });
}

} // namespace

void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind, const QStringList &names,
    std::function<void()> finished)
{
    if (names.isEmpty()) {
        return;
    }
    const QString &noun = kind.humanReadableResourceName;
    const QString message = names.size() == 1
        ? QStringLiteral("Are you sure you want to delete the %1 \"%2\"?").arg(noun, names.first())
        : QStringLiteral("Are you sure you want to delete %1 %2s?").arg(names.size()).arg(noun);
    const Deletion deletion{&window, kind.resourceName, noun, kind.namespaced, names, window.currentContext(),
        window.currentNamespace(), std::move(finished)};
    showConfirmation(&view, QStringLiteral("Confirm Deletion"), message, QStringLiteral("Delete"),
        QStringLiteral("Cancel"), nullptr, [deletion](bool confirmed) {
            if (confirmed) {
                deleteOnceAgreed(deletion);
            }
        });
}

} // namespace tidewright
