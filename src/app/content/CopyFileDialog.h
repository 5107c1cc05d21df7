// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDialog>

#include <functional>

class QLineEdit;

namespace tidewright {

/// Asks which files and folders to copy into a container, and where to.
class CopyFileDialog : public QFileDialog
{
    Q_OBJECT
public:
    /// `paths` are absolute, in the order in which the user chose or typed them; those chosen together, with
    /// Shift or a frame, from top to bottom.
    using Chosen = std::function<void(const QStringList &paths, const QString &destination)>;

    /// The dialog shows the lines of `target`. `chosen` is not called when the user cancels, nor when
    /// `receiver` is gone.
    static void open(QWidget *parent, QObject *receiver, const QString &target, Chosen chosen);

    /// What was typed, or the usual place when nothing was.
    QString destination() const;

private:
    CopyFileDialog(QWidget *parent, const QString &target);
    QStringList paths() const;
    void accept() override;

    QLineEdit *m_destination;
};

} // namespace tidewright
