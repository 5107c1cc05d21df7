// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pods/logs/text/LogPattern.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QHBoxLayout;
class QLineEdit;
class QToolButton;

namespace tidewright {

/// A row to enter a pattern in: the text, whether case matters, whether it is a regular expression, and what
/// came of it. Hidden until it is opened.
class LogPatternBar : public QWidget
{
    Q_OBJECT
public:
    /// `withSteps` adds the buttons to the previous and the next match.
    LogPatternBar(const QString &title, const QString &placeholder, bool withSteps);

    /// A further switch, told of like the others by `patternChanged`.
    QToolButton *addSwitch(const QString &text, const QString &tip);
    /// A further choice, in front of what came of the pattern.
    void addChoice(QWidget *choice);
    LogPattern pattern() const;
    QLineEdit *field() const { return m_field; }
    /// What came of the pattern.
    void setResult(const QString &text);
    /// Shows the bar for typing; a text given replaces the field's.
    void open(const QString &text = {});
    void close();
    /// Tells the pattern once more.
    void changed();

Q_SIGNALS:
    /// The pattern to use now: empty when the bar is closed. An invalid one is told, and says so itself.
    void patternChanged(const LogPattern &pattern);
    void stepped(bool forward);
    void closed();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QToolButton *addButton(const QString &text, const QString &tip);

    QLineEdit *m_field;
    QToolButton *m_case;
    QToolButton *m_expression;
    QHBoxLayout *m_switches; ///< behind the field
    QLabel *m_result;
    QTimer m_typing;
};

} // namespace tidewright
