// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/SecretController.h"

#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ChangeQuestion.h"
#include "resources/controllers/SecretWindow.h"
#include "resources/kinds/Secret.h"

#include <QComboBox>
#include <QFormLayout>
#include <QMenu>

#include <algorithm>

namespace tidewright {

namespace {

const auto nothingDecoded = QStringLiteral("Nothing was decoded");

/// What the API server takes for a key, and a template for a text without escapes.
bool isKey(const QString &key)
{
    return !key.isEmpty() && std::all_of(key.cbegin(), key.cend(), [](QChar c) {
        return (c.unicode() < 128 && c.isLetterOrNumber()) || c == QLatin1Char('-') || c == QLatin1Char('_')
            || c == QLatin1Char('.');
    });
}

} // namespace

SecretController::SecretController(WindowState &window, QWidget *parent)
    : CommandTable(secretKind(), window, parent)
{
}

void SecretController::read(
    const ChangePlace &place, const ObjectName &secret, const QString &goTemplate, Read read)
{
    WindowState &window = kubeSplitViewController();
    QStringList line
        = commandLine({QStringLiteral("get"), QStringLiteral("secret"), secret.name}, secret.nameSpace);
    line += {QStringLiteral("-ogo-template"), QLatin1String("--template=") + goTemplate};
    setLoading(true);
    window.kubeCtl().makeShell()->runAsync(
        line, false, nullptr, [self = QPointer(this), place, read](const ShellResult &result) {
            postToMain(self, [place, read, result](SecretController &table) {
                table.setLoading(false);
                WindowState &shown = table.kubeSplitViewController();
                if (const QString failure = result.failure(); !failure.isEmpty()) {
                    refuseChange(shown, nothingDecoded, failure);
                } else if (!place.isStillShown()) {
                    refuseMovedChange(shown, nothingDecoded);
                } else {
                    read(result.output);
                }
            });
        });
}

void SecretController::decodeKey()
{
    const auto chosen = onlyChosen();
    if (!chosen || !canName({*chosen}, nothingDecoded)) {
        return;
    }
    const ObjectName secret = *chosen;
    const ChangePlace place(kubeSplitViewController());
    read(place, secret, QStringLiteral("{{range $key, $value := .data}}{{$key}}\n{{end}}"),
        [this, place, secret](const QByteArray &output) {
            QStringList keys = QString::fromUtf8(output).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            keys.removeIf([](const QString &key) { return !isKey(key); });
            if (keys.isEmpty()) {
                refuseChange(kubeSplitViewController(), nothingDecoded,
                    QStringLiteral("the secret \"%1\" has no keys.").arg(secret.name));
            } else {
                chooseKey(place, secret, keys);
            }
        });
}

void SecretController::chooseKey(const ChangePlace &place, const ObjectName &secret, const QStringList &keys)
{
    auto *form = new QWidget;
    auto *box = new QComboBox;
    box->addItems(keys);
    box->setAccessibleName(tr("Key"));
    auto *layout = new QFormLayout(form);
    layout->addRow(tr("Key:"), box);
    layout->addRow(confirmationDetails(place.text(kind(), secret.nameSpace)));
    form->setFocusProxy(box);
    confirmChange(this, place,
        {.title = QStringLiteral("Show a Secret Value"),
            .message
            = QStringLiteral("Which key of the secret \"%1\" is to be shown? Its value can be read on the "
                             "screen for a minute, or until its window is closed.")
                  .arg(secret.name),
            .yes = QStringLiteral("Show Value"),
            .accessory = form},
        [self = QPointer(this), choice = QPointer(box), place, secret](bool confirmed) {
            if (self && choice && confirmed) {
                self->show(place, secret, choice->currentText());
            }
        });
}

void SecretController::show(const ChangePlace &place, const ObjectName &secret, const QString &key)
{
    if (!place.isStillShown()) {
        refuseMovedChange(kubeSplitViewController(), nothingDecoded);
        return;
    }
    // In base64, so that the bytes arrive as they are, also those that are no text.
    read(place, secret, QStringLiteral("{{index .data \"%1\"}}").arg(key),
        [this, secret, key](const QByteArray &output) {
            const auto decoded
                = QByteArray::fromBase64Encoding(output, QByteArray::AbortOnBase64DecodingErrors);
            if (!decoded) {
                refuseChange(kubeSplitViewController(), nothingDecoded,
                    QStringLiteral("the secret \"%1\" has no key \"%2\" any more.").arg(secret.name, key));
                return;
            }
            (new SecretWindow(display_text::clean(secret.name), key, *decoded, window()))->show();
        });
}

void SecretController::extendContextMenu(QMenu &menu)
{
    enableFor(Deed::ReadValue,
        *menu.addAction(QStringLiteral("Decode Key…"), this, &SecretController::decodeKey),
        chosenCount() == 1);
}

} // namespace tidewright
