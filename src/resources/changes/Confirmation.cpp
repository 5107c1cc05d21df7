// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/Confirmation.h"

#include "platform/text/DisplayText.h"

#include <QAccessible>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace tidewright {

namespace {

constexpr int comfortableWidth = 440; // for names to stand in one piece
constexpr int spacing = 6;
constexpr qsizetype longestMessage = 20'000; // no name has a tenth of it
constexpr int longMessage = 8000; // more UTF-16 units than a label lays out within a few frames

std::function<QWidget *()> &mainWindowLookup()
{
    static std::function<QWidget *()> lookup;
    return lookup;
}

/// The active window may be another application's, or a dialog that is closing, while a question comes up.
QWidget *mainWindow()
{
    QWidget *window = mainWindowLookup() ? mainWindowLookup()() : nullptr;
    return window ? window : QApplication::activeWindow();
}

constexpr int otherIsChosen = QDialog::Accepted + 1;

class Confirmation : public QDialog
{
public:
    Confirmation(const Question &question, QWidget *window);

protected:
    void showEvent(QShowEvent *event) override;

private:
    QLabel *iconLabel();
    QLabel *textLabel(const QString &text);
    QWidget *messageView(const QString &message);
    QWidget *nameField(const QString &toBeTyped, QPushButton &yes);
    void chooseDefault(QPushButton &yes, QPushButton *no, QWidget *form);
};

Confirmation::Confirmation(const Question &question, QWidget *window)
    : QDialog(window,
        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
            | Qt::WindowCloseButtonHint)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowModality(Qt::WindowModal);
    setAccessibleName(display_text::name(question.title));
    setAccessibleDescription(display_text::clean(display_text::shortened(question.message, longMessage)));

    auto *buttons = new QDialogButtonBox;
    buttons->setCenterButtons(style()->styleHint(QStyle::SH_MessageBox_CenterButtons, nullptr, this) != 0);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    QPushButton *yes
        = buttons->addButton(display_text::withoutMnemonics(question.yes), QDialogButtonBox::AcceptRole);
    QPushButton *no = question.no.isEmpty()
        ? nullptr
        : buttons->addButton(display_text::withoutMnemonics(question.no), QDialogButtonBox::RejectRole);

    if (!question.other.isEmpty()) {
        QPushButton *other = buttons->addButton(
            display_text::withoutMnemonics(question.other), QDialogButtonBox::ActionRole);
        connect(other, &QPushButton::clicked, this, [this] { done(otherIsChosen); });
    }

    auto *column = new QVBoxLayout;
    column->setSpacing(spacing);
    QLabel *title = textLabel(accessibleName());
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    column->addWidget(title);
    if (!question.message.isEmpty()) {
        column->addWidget(
            messageView(display_text::clean(display_text::shortened(question.message, longestMessage))));
    }
    QWidget *form = nullptr;
    if (question.accessory) {
        column->addWidget(question.accessory);
        form = question.accessory->focusProxy();
    }
    if (!question.toBeTyped.isEmpty()) {
        QWidget *field = nameField(question.toBeTyped, *yes);
        column->addWidget(field);
        form = form ? form : field->focusProxy();
    }
    auto *grid = new QGridLayout(this);
    grid->setSizeConstraint(QLayout::SetFixedSize);
    grid->setSpacing(2 * spacing);
    grid->addWidget(iconLabel(), 0, 0, Qt::AlignTop);
    grid->addLayout(column, 0, 1);
    grid->addWidget(buttons, 1, 0, 1, 2);
    chooseDefault(*yes, no, form);
}

/// The toolkit's own questions announce themselves, too.
void Confirmation::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

QLabel *Confirmation::iconLabel()
{
    auto *label = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    label->setPixmap(style()
                         ->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this)
                         .pixmap(QSize(size, size), devicePixelRatio()));
    return label;
}

QLabel *Confirmation::textLabel(const QString &text)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText); // names come from the cluster
    label->setWordWrap(true);
    label->setMinimumWidth(comfortableWidth);
    label->setTextInteractionFlags(Qt::TextInteractionFlags(
        style()->styleHint(QStyle::SH_MessageBox_TextInteractionFlags, nullptr, this)));
    label->setContentsMargins(2, 0, 0, 0); // as the details below it
    return label;
}

/// A message that would push the buttons off the screen stands in a view that scrolls.
QWidget *Confirmation::messageView(const QString &message)
{
    constexpr int tallestMessage = 340;
    constexpr double partOfScreen = 0.4;
    const QSize room = screen()->availableSize() * partOfScreen;
    const int tallest = std::min(tallestMessage, room.height());
    if (message.size() <= longMessage) {
        auto *label = textLabel(message);
        label->setMinimumWidth(0);
        const bool fits = label->heightForWidth(comfortableWidth) <= tallest
            && label->minimumSizeHint().width() <= room.width(); // a long word does not wrap
        label->setMinimumWidth(comfortableWidth);
        if (fits) {
            return label;
        }
        delete label;
    }
    auto *view = new QPlainTextEdit(message);
    view->setReadOnly(true);
    view->setTabChangesFocus(true);
    view->setAccessibleName(accessibleName());
    view->setMinimumWidth(comfortableWidth);
    view->setFixedHeight(tallest);
    return view;
}

/// A field to type the text into, which `yes` waits for.
QWidget *Confirmation::nameField(const QString &toBeTyped, QPushButton &yes)
{
    const QString shown = display_text::clean(toBeTyped);
    auto *both = new QWidget;
    auto *column = new QVBoxLayout(both);
    column->setContentsMargins(0, 0, 0, 0);
    auto *label = textLabel(tr("The context %1 is protected. Type its name to go on:").arg(shown));
    auto *field = new QLineEdit;
    field->setAccessibleName(tr("Name of the context"));
    label->setBuddy(field);
    column->addWidget(label);
    column->addWidget(field);
    yes.setEnabled(false);
    connect(field, &QLineEdit::textChanged, &yes,
        [button = &yes, shown](const QString &typed) { button->setEnabled(typed == shown); });
    both->setFocusProxy(field);
    return both;
}

void Confirmation::chooseDefault(QPushButton &yes, QPushButton *no, QWidget *form)
{
    QPushButton &chosen = no && !form ? *no : yes;
    chosen.setDefault(true);
    form ? form->setFocus() : chosen.setFocus();
}

} // namespace

void setMainWindowLookup(std::function<QWidget *()> lookup)
{
    mainWindowLookup() = std::move(lookup);
}

void showConfirmation(QWidget *view, const Question &question, Answered answered)
{
    QWidget *window = view ? view->window() : mainWindow();
    if (!window) {
        delete question.accessory;
        return;
    }
    auto *dialog = new Confirmation(question, window);
    QObject::connect(dialog, &QDialog::finished, dialog,
        [answered = std::move(answered), other = question.otherChosen](int result) {
            if (result == otherIsChosen) {
                other();
            } else {
                answered(result == QDialog::Accepted);
            }
        });
    dialog->open();
}

} // namespace tidewright
