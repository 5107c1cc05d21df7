// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/ActionRequest.h"

#include "platform/desktop/Notifications.h"
#include "platform/text/DisplayText.h"
#include "resources/changes/ClusterChange.h"
#include "resources/changes/Confirmation.h"

#include <QLocale>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QUuid>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr int tallestForm = 420;

// Messages scroll; more than this nobody reads.
constexpr int mostLines = 2000;
constexpr qsizetype longestMessage = 100'000; // code points, as all lengths here
// Titles and buttons do not scroll: a title that is too long stands at the head of the message.
constexpr int mostTitleLines = 4;
constexpr qsizetype longestTitle = 300;
constexpr qsizetype longestButton = 60;

/// The text, or its beginning and how much is left out.
QString fitMessage(const QString &text)
{
    const QString shown = display_text::shortened(text, longestMessage, mostLines);
    if (shown == text) {
        return text;
    }
    const QString rest = text.mid(shown.size() - 1); // without the ellipsis
    const qsizetype lines = rest.count(QLatin1Char('\n')) + (rest.startsWith(QLatin1Char('\n')) ? 0 : 1);
    const QLocale locale;
    return shown
        + QStringLiteral("\n\n%1 more characters are left out (lines: %2).")
              .arg(locale.toString(rest.toUcs4().size()), locale.toString(lines));
}

QString text(const ActionRequest &request, const char *key, const QString &otherwise = {})
{
    return request.state.value(QLatin1String(key), otherwise);
}

void ask(const ActionRequest &request, QWidget *accessory, std::function<void(bool)> answered)
{
    using display_text::shortened;
    const QString whole = text(request, "title", QStringLiteral("Alert!"));
    const QString title = shortened(whole, longestTitle, mostTitleLines);
    const QString message = text(request, "dialog_text");
    showConfirmation(nullptr,
        {.title = title,
            .message
            = fitMessage(title == whole ? message : QString(whole + QLatin1String("\n\n") + message)),
            .yes = shortened(text(request, "ok_button_text", QStringLiteral("OK")), longestButton, 1),
            .no = shortened(text(request, "cancel_button_text"), longestButton, 1),
            .accessory = accessory},
        std::move(answered));
}

/// A form of many rows scrolls, so that the buttons stay on the screen.
QWidget *fittingTheScreen(ActionForm *form)
{
    const QSize size = form->sizeHint();
    if (size.height() <= tallestForm) {
        return form;
    }
    auto *area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidget(form);
    area->setWidgetResizable(true);
    area->setFocusProxy(form);
    area->setFixedHeight(tallestForm);
    area->setMinimumWidth(size.width() + area->verticalScrollBar()->sizeHint().width());
    return area;
}

QWidget *withPlace(QWidget *form, const QString &place)
{
    if (place.isEmpty()) {
        return form;
    }
    auto *both = new QWidget;
    auto *column = new QVBoxLayout(both);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(form);
    column->addWidget(confirmationDetails(place));
    both->setFocusProxy(form);
    return both;
}

} // namespace

void showRequest(const ActionRequest &request, std::function<void(const ActionAnswer &)> answered)
{
    switch (request.kind) {
    case ActionRequest::Kind::None:
        return;
    case ActionRequest::Kind::Dialog:
        ask(request, request.place.isEmpty() ? nullptr : confirmationDetails(request.place),
            [answered = std::move(answered)](bool first) { answered(first); });
        return;
    case ActionRequest::Kind::Notification:
        deliverNotification({QUuid::createUuid().toString(QUuid::WithoutBraces), text(request, "title"),
            text(request, "subtitle"), text(request, "informative_text")});
        answered(std::monostate());
        return;
    case ActionRequest::Kind::Form: {
        auto *form = new ActionForm(request.fields);
        ask(request, withPlace(fittingTheScreen(form), request.place),
            [form = QPointer(form), answered = std::move(answered)](bool first) {
                if (first && form) {
                    answered(form->values());
                }
            });
        return;
    }
    }
}

} // namespace tidewright
