// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QTest>

/// Clicks the button with that text, mnemonics aside, somewhere in a widget.
inline void clickButton(const QWidget *in, const QString &text)
{
    QVERIFY(in);
    for (QAbstractButton *button : in->findChildren<QAbstractButton *>()) {
        if (button->isVisibleTo(in) && button->text().remove(u'&') == text) {
            button->click();
            return;
        }
    }
    QFAIL(qPrintable(QStringLiteral("there is no button ") + text));
}
