// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Console.h"

class QPlainTextEdit;
class QWidget;

namespace tidewright {

/// The console of one window: a read-only record of the commands that ran on the user's behalf, newest last.
/// Keeps the latest entries only.
class ConsolePane : public Console
{
    Q_OBJECT
public:
    /// The view belongs to whoever puts it into a window.
    explicit ConsolePane(QObject *parent = nullptr);

    QWidget *view() const;
    void addEntry(
        const QString &command, const QString &response, const std::optional<ConsoleError> &error) override;
    void clear();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void applyColours();
    void append(const QString &text, const char *colour);

    QPointer<QPlainTextEdit> m_text;
};

} // namespace tidewright
