// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;
class QToolButton;

namespace tidewright {

/// The line below a console's text: the field in which commands are typed, which script runs, and a button
/// that stops the typed commands and the scripts. What comes and goes has its place kept.
class CommandEntryBar : public QWidget
{
    Q_OBJECT
public:
    explicit CommandEntryBar(QWidget *parent = nullptr);

    QLineEdit *field() const { return m_field; }
    /// What the field says while it is empty.
    void setHint(const QString &text);
    /// Empty: nothing runs. The tool tip names all of several.
    void setRunningText(const QString &text, const QStringList &all);
    /// The typed commands and the scripts that run now; without any, there is no button.
    void setTypedCommands(const QStringList &commands);

Q_SIGNALS:
    void returnPressed();
    /// Up and Down in the field.
    void moveUp();
    void moveDown();
    void stopRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildLayout();
    void deleteWord();

    QLineEdit *m_field;
    QLabel *m_running;
    QToolButton *m_stop;
};

} // namespace tidewright
