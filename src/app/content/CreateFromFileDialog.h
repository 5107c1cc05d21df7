// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFileDialog>

#include <functional>

namespace tidewright {

/// Asks which YAML files, or which folder of them, to create objects from or to apply.
class CreateFromFileDialog : public QFileDialog
{
    Q_OBJECT
public:
    using Chosen = std::function<void(const QStringList &paths)>;

    struct Texts
    {
        QString title;
        QString message;
        QString accept; ///< the button for the chosen files
        QString folder; ///< and that for a folder
        QString place; ///< where the objects will be
    };

    /// Opens the dialog on `parent` and returns at once; `chosen` is called unless the user cancels or
    /// `receiver` goes.
    static void open(QWidget *parent, QObject *receiver, const Texts &texts, Chosen chosen);

private:
    CreateFromFileDialog(QWidget *parent, const Texts &texts);
    /// Takes the selected folders, or the one that is shown when none is.
    void takeFolder();

    QStringList m_folders;
};

} // namespace tidewright
