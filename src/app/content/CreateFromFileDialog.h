// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDialog>

#include <functional>

namespace tidewright {

/// Asks which YAML files, or which folder of them, to create objects from.
class CreateFromFileDialog : public QFileDialog
{
    Q_OBJECT
public:
    using Chosen = std::function<void(const QStringList &paths)>;

    /// Opens the dialog on `parent` and returns at once; `chosen` is called unless the user cancels or
    /// `receiver` goes. `place` says where the objects will be.
    static void open(QWidget *parent, QObject *receiver, const QString &place, Chosen chosen);

private:
    explicit CreateFromFileDialog(QWidget *parent, const QString &place);
    /// Takes the selected folders, or the one that is shown when none is.
    void takeFolder();

    QStringList m_folders;
};

} // namespace tidewright
