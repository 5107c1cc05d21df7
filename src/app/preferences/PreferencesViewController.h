// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

class QLabel;

namespace tidewright {

/// A pane of the preferences window, which owns it and takes the pane's size and title while it shows it.
class PreferencesViewController : public QWidget
{
    Q_OBJECT
public:
    QString title() const { return m_title; }
    /// The size that the pane's content asks for.
    QSize preferredContentSize() const;

protected:
    explicit PreferencesViewController(const QString &title, QWidget *parent = nullptr);

    /// The pane is about to be seen for the first time: fills it with what the settings hold.
    virtual void viewDidLoad() = 0;
    void showEvent(QShowEvent *event) override;

    /// A quiet line of explanation, with room for `lines` lines of text.
    static QLabel *makeHint(const QString &text, int lines = 1);

private:
    QString m_title;
    QSize m_preferredContentSize;
};

} // namespace tidewright
