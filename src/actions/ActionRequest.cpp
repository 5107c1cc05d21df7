// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/ActionRequest.h"

#include "platform/DisplayText.h"
#include "platform/Notifications.h"
#include "resources/ClusterChange.h"
#include "resources/Confirmation.h"

#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QUuid>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr qsizetype longestText = 4000; // more fits no screen, and laying it out takes long
constexpr int tallestForm = 420;

/// More lines than these make no question.
constexpr int mostLines = 24;

QString text(const ActionRequest &request, const char *key, const QString &otherwise = {})
{
    return display_text::shortened(
        request.state.value(QLatin1String(key), otherwise), longestText, mostLines);
}

void ask(const ActionRequest &request, QWidget *accessory, std::function<void(bool)> answered)
{
    showConfirmation(nullptr, text(request, "title", QStringLiteral("Alert!")), text(request, "dialog_text"),
        text(request, "ok_button_text", QStringLiteral("OK")), text(request, "cancel_button_text"), accessory,
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
