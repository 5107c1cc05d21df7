// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/changes/Confirmation.h"

#include "platform/text/DisplayText.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace tidewright {

namespace {

constexpr int comfortableWidth = 440;
constexpr int longMessage = 8000; // more UTF-16 units than a label lays out within a few frames
constexpr int textColumn = 2; // of a message box's layout, beside its icon

std::function<QWidget *()> &mainWindowLookup()
{
    static std::function<QWidget *()> lookup;
    return lookup;
}

/// Puts a message that would push the buttons off the screen into a view that scrolls.
void fitOnScreen(const QMessageBox &box, QGridLayout &grid, const QString &message)
{
    constexpr int tallestMessage = 340;
    constexpr double partOfScreen = 0.4;
    const QSize room = box.screen()->availableSize() * partOfScreen;
    const int tallest = std::min(tallestMessage, room.height());
    auto *label = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_informativelabel"));
    const auto fits = [&] { // a long word does not wrap
        return label->heightForWidth(comfortableWidth) <= tallest
            && label->minimumSizeHint().width() <= room.width();
    };
    if (!label || (message.size() <= longMessage && fits())) {
        return;
    }
    int row = 0;
    int column = 0;
    int rows = 1;
    int columns = 1;
    grid.getItemPosition(grid.indexOf(label), &row, &column, &rows, &columns);
    grid.removeWidget(label);
    label->hide();
    auto *text = new QPlainTextEdit(message);
    text->setReadOnly(true);
    text->setTabChangesFocus(true);
    text->setAccessibleName(box.text());
    text->setFixedHeight(tallest);
    grid.addWidget(text, row, column, rows, columns);
}

/// The active window may be another application's, or a dialog that is closing, while a question comes up.
QWidget *mainWindow()
{
    QWidget *window = mainWindowLookup() ? mainWindowLookup()() : nullptr;
    return window ? window : QApplication::activeWindow();
}

/// Below the text of a question, from top to bottom: what it comes with, and a field to type `text` into,
/// which `first` waits for.
QWidget *withTypedText(QWidget *accessory, const QString &text, QPushButton *first)
{
    auto *both = new QWidget;
    auto *column = new QVBoxLayout(both);
    column->setContentsMargins(0, 0, 0, 0);
    if (accessory) {
        column->addWidget(accessory);
    }
    const QString shown = display_text::clean(text);
    auto *label = new QLabel(QObject::tr("The context %1 is protected. Type its name to go on:").arg(shown));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setContentsMargins(2, 0, 0, 0); // as the details above it
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *field = new QLineEdit;
    field->setAccessibleName(QObject::tr("Name of the context"));
    label->setBuddy(field);
    column->addWidget(label);
    column->addWidget(field);
    column->addSpacing(6);
    first->setEnabled(false);
    QObject::connect(field, &QLineEdit::textChanged, first,
        [first, shown](const QString &typed) { first->setEnabled(typed == shown); });
    both->setFocusProxy(accessory && accessory->focusProxy() ? accessory->focusProxy() : field);
    return both;
}

/// The toolkit takes Escape for a press of the button when there is only one.
class Question : public QMessageBox
{
public:
    using QMessageBox::QMessageBox;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->matches(QKeySequence::Cancel)) {
            reject();
        } else {
            QMessageBox::keyPressEvent(event);
        }
    }
};

} // namespace

void setMainWindowLookup(std::function<QWidget *()> lookup)
{
    mainWindowLookup() = std::move(lookup);
}

void showConfirmation(QWidget *view, const QString &title, const QString &message, const QString &firstButton,
    const QString &secondButton, QWidget *accessory, std::function<void(bool first)> completion,
    const QString &toBeTyped)
{
    const QString shown = display_text::clean(message);
    QWidget *window = view ? view->window() : mainWindow();
    if (!window) {
        delete accessory;
        return;
    }
    auto *box = new Question(
        QMessageBox::Warning, QString(), display_text::clean(title), QMessageBox::NoButton, window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(shown.size() <= longMessage ? shown : QString(QChar(0x2026)));
    if (auto *label = box->findChild<QLabel *>(QStringLiteral("qt_msgbox_informativelabel"))) {
        label->setTextFormat(Qt::PlainText); // names come from the cluster
    }
    QPushButton *first = box->addButton(display_text::withoutMnemonics(firstButton), QMessageBox::AcceptRole);
    if (!toBeTyped.isEmpty()) {
        accessory = withTypedText(accessory, toBeTyped, first);
    }
    const bool isForm = accessory && accessory->focusProxy();
    box->setDefaultButton(first);
    if (!secondButton.isEmpty()) {
        QPushButton *second
            = box->addButton(display_text::withoutMnemonics(secondButton), QMessageBox::RejectRole);
        box->setDefaultButton(isForm ? first : second);
        box->setEscapeButton(second);
    }
    if (auto *grid = qobject_cast<QGridLayout *>(box->layout())) {
        fitOnScreen(*box, *grid, shown);
        if (accessory) {
            auto *buttons = box->findChild<QDialogButtonBox *>();
            grid->removeWidget(buttons);
            grid->addWidget(accessory, grid->rowCount(), textColumn, 1, grid->columnCount() - textColumn);
            grid->addWidget(buttons, grid->rowCount(), 0, 1, grid->columnCount());
        }
        if (isForm) {
            accessory->setFocus();
        }
        // Wide enough for names to stand in one piece.
        grid->addItem(new QSpacerItem(comfortableWidth, 0), grid->rowCount(), 0, 1, grid->columnCount());
    }
    QObject::connect(box, &QMessageBox::finished, box,
        [box, first, completion = std::move(completion)] { completion(box->clickedButton() == first); });
    box->open();
}

} // namespace tidewright
