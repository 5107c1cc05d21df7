// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/RowDeletion.h"

#include "platform/MainQueue.h"
#include "resources/Confirmation.h"

#include <QLabel>
#include <QLocale>
#include <QPointer>

namespace tidewright {

namespace {

/// What the user saw and agreed to.
struct Deletion
{
    QPointer<WindowState> window;
    QString resourceName;
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
    deletion.window->agreeWithKubeConfig([deletion](bool agreed) {
        if (agreed && deletion.window) {
            deleteNow(deletion);
        }
    });
}

/// Where the objects are, and which when there are several: the first few by name.
QLabel *detailsOf(const Deletion &deletion, const ResourceKind &kind)
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
    text += QStringLiteral("Context: %1").arg(deletion.context);
    if (kind.namespaced) {
        text += QStringLiteral("\nNamespace: %1").arg(deletion.nameSpace);
    }
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setContentsMargins(12, 0, 12, 8);
    return label;
}

} // namespace

QString whyNotByName(const ResourceKind &kind, const QStringList &names, const QString &nameSpace)
{
    if (kind.namespaced && nameSpace == allNamespaces) {
        return QStringLiteral(
            "choose a namespace first. While all namespaces are shown, kubectl cannot tell which of "
            "them a %1 is in.")
            .arg(kind.humanReadableResourceName);
    }
    for (const QString &name : names) {
        if (name.startsWith(QLatin1Char('-'))) {
            return QStringLiteral("kubectl would take the name \"%1\" for an option.").arg(name);
        }
    }
    return {};
}

void confirmAndDelete(QWidget &view, WindowState &window, const ResourceKind &kind, const QStringList &names,
    std::function<void()> finished)
{
    if (names.isEmpty()) {
        return;
    }
    if (const QString reason = whyNotByName(kind, names, window.currentNamespace()); !reason.isEmpty()) {
        refuse(window, reason);
        return;
    }
    const QString &noun = kind.humanReadableResourceName;
    const QString message = names.size() == 1
        ? QStringLiteral("Are you sure you want to delete the %1 \"%2\"?").arg(noun, names.first())
        : QStringLiteral("Are you sure you want to delete %1 %2s?").arg(names.size()).arg(noun);
    const Deletion deletion{&window, kind.resourceName, names, window.currentContext(),
        window.currentNamespace(), std::move(finished)};
    showConfirmation(&view, QStringLiteral("Confirm Deletion"), message, QStringLiteral("Delete"),
        QStringLiteral("Cancel"), detailsOf(deletion, kind), [deletion](bool confirmed) {
            if (confirmed) {
                deleteOnceAgreed(deletion);
            }
        });
}

} // namespace tidewright
