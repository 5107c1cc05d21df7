// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QTimer>

class QLabel;
class QPlainTextEdit;

namespace tidewright {

/// Shows the value of one key of a secret, for a minute at most. Deletes itself when it is closed.
class SecretWindow : public QDialog
{
    Q_OBJECT
public:
    /// `value` are the decoded bytes; those that are no UTF-8 are shown in base64.
    SecretWindow(const QString &secret, const QString &key, const QByteArray &value, QWidget *parent);
    ~SecretWindow() override;

    /// Called every second: counts, and clears the value in the end.
    void passSecond();

private:
    void clearValue();
    void showRemaining();

    QPlainTextEdit *m_value;
    QLabel *m_remaining;
    QTimer m_seconds;
    int m_left = 60; ///< seconds
};

} // namespace tidewright
