// SPDX-License-Identifier: GPL-3.0-or-later
#include "actions/ActionRequest.h"

#include "platform/Notifications.h"
#include "resources/ClusterChange.h"
#include "resources/Confirmation.h"

#include <QLocale>
#include <QPointer>
#include <QScrollArea>
#include <QScrollBar>
#include <QUuid>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr int tallestForm = 420;

// Messages scroll; laying out more than this holds up the window.
constexpr int mostLines = 2000;
constexpr qsizetype longestMessage = 100'000; // characters
// Titles and buttons do not scroll: what is too long for a title stands at the head of the message.
constexpr int mostTitleLines = 4;
constexpr qsizetype longestTitle = 300;
constexpr qsizetype longestButton = 60;

/// As much of the beginning as the limits let through.
QString beginning(const QString &text, qsizetype longest, int lines = 1)
{
    return text.section(QLatin1Char('\n'), 0, lines - 1).left(longest);
}

QString marked(const QString &shown, const QString &text, const QString &mark)
{
    return shown.size() < text.size() ? QString(shown + mark) : text;
}

QString shortTitle(const QString &text)
{
    return marked(beginning(text, longestTitle, mostTitleLines), text, QChar(0x2026));
}

QString buttonText(const QString &text)
{
    return marked(beginning(text, longestButton), text, QChar(0x2026));
}

QString message(const QString &text)
{
    const QString shown = beginning(text, longestMessage, mostLines);
    const QString rest = text.mid(shown.size());
    const qsizetype lines = rest.count(QLatin1Char('\n')) + (rest.startsWith(QLatin1Char('\n')) ? 0 : 1);
    const QLocale locale;
    return marked(shown, text,
        QStringLiteral("\n\n%1 more characters are left out (lines: %2).")
            .arg(locale.toString(rest.size()), locale.toString(lines)));
}

QString text(const ActionRequest &request, const char *key, const QString &otherwise = {})
{
    return request.state.value(QLatin1String(key), otherwise);
}

void ask(const ActionRequest &request, QWidget *accessory, std::function<void(bool)> answered)
{
    const QString whole = text(request, "title", QStringLiteral("Alert!"));
    const QString title = shortTitle(whole);
    const QString asked = text(request, "dialog_text");
    showConfirmation(nullptr, title,
        message(title == whole ? asked : QString(whole + QLatin1String("\n\n") + asked)),
        buttonText(text(request, "ok_button_text", QStringLiteral("OK"))),
        buttonText(text(request, "cancel_button_text")), accessory, std::move(answered));
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
