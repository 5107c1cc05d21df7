// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include <algorithm>

namespace tidewright::test {

/// A question over a window, found and read by what a screen reader is told of it. Empty when there is none.
class OpenQuestion
{
public:
    static QList<OpenQuestion> all(const QObject &window)
    {
        QList<OpenQuestion> found;
        for (QDialog *dialog : window.findChildren<QDialog *>()) {
            if (dialog->isVisible() && !dialog->accessibleName().isEmpty()) {
                found.append(OpenQuestion(dialog));
            }
        }
        return found;
    }
    static OpenQuestion over(const QObject &window) { return all(window).value(0); }

    OpenQuestion() = default;
    explicit OpenQuestion(QDialog *dialog)
        : m_dialog(dialog)
    {
    }
    /// Null when there is none, or none any more.
    operator QDialog *() const { return m_dialog && m_dialog->isVisible() ? m_dialog.data() : nullptr; }
    QDialog *operator->() const { return m_dialog; }

    QString title() const { return m_dialog ? m_dialog->accessibleName() : QStringLiteral("no question"); }
    QString message() const
    {
        if (!m_dialog) {
            return QStringLiteral("no question");
        }
        const auto *view = m_dialog->findChild<QPlainTextEdit *>();
        return view ? view->toPlainText() : m_dialog->accessibleDescription();
    }
    /// In the order of their meaning: what does it, what does not.
    QList<QPushButton *> buttons() const
    {
        QList<QPushButton *> found = m_dialog->findChildren<QPushButton *>();
        const auto *box = m_dialog->findChild<QDialogButtonBox *>();
        std::stable_sort(found.begin(), found.end(),
            [box](QPushButton *a, QPushButton *b) { return box->buttonRole(a) < box->buttonRole(b); });
        return found;
    }
    /// Whether a label begins so.
    bool says(const QString &text) const
    {
        const auto labels = m_dialog->findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(),
            [&](const QLabel *label) { return label->text().startsWith(text); });
    }
    void press(const QString &title) const
    {
        QVERIFY(m_dialog);
        const auto all = buttons();
        const auto button = std::find_if(
            all.begin(), all.end(), [&](const QPushButton *each) { return each->text() == title; });
        QVERIFY2(button != all.end(), qPrintable(title));
        QTest::mouseClick(*button, Qt::LeftButton);
    }

private:
    QPointer<QDialog> m_dialog;
};

} // namespace tidewright::test
