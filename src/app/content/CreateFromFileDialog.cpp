// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/CreateFromFileDialog.h"

#include "app/content/FileDialogSelection.h"
#include "platform/text/DisplayText.h"

#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>

namespace tidewright {

void CreateFromFileDialog::open(QWidget *parent, QObject *receiver, const QString &place, Chosen chosen)
{
    auto *dialog = new CreateFromFileDialog(parent, place);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QDialog::accepted, receiver, [dialog, chosen = std::move(chosen)] {
        chosen(dialog->m_folders.isEmpty() ? dialog->selectedFiles() : dialog->m_folders);
    });
    dialog->show();
}

CreateFromFileDialog::CreateFromFileDialog(QWidget *parent, const QString &place)
    : QFileDialog(parent, tr("Create from File"))
{
    // The desktops' own dialogs choose files or folders, never both.
    setOption(QFileDialog::DontUseNativeDialog);
    setFileMode(QFileDialog::ExistingFiles);
    setNameFilter(tr("YAML files (*.yaml)"));
    setFilter(QDir::AllDirs | QDir::Files | QDir::NoDotAndDotDot);
    setOption(QFileDialog::ReadOnly);
    setLabelText(QFileDialog::Accept, tr("Create"));
    if (auto *grid = qobject_cast<QGridLayout *>(layout())) {
        auto *message = new QLabel(QStringLiteral("Select a .yaml file(s) to create resources."));
        auto *folder = new QPushButton(tr("Create from This &Folder"));
        folder->setAutoDefault(false);
        folder->setToolTip(tr("Takes all YAML files in the selected folder and the folders below it"));
        connect(folder, &QPushButton::clicked, this, &CreateFromFileDialog::takeFolder);
        const int row = grid->rowCount();
        grid->addWidget(message, row, 0, 1, 2);
        grid->addWidget(folder, row, 2);
        auto *target = new QLabel(display_text::clean(place));
        target->setTextFormat(Qt::PlainText);
        grid->addWidget(target, row + 1, 0, 1, 2);
    }
}

void CreateFromFileDialog::takeFolder()
{
    for (const QString &path : selectedInList(*this)) {
        if (QFileInfo(path).isDir()) {
            m_folders.append(path);
        }
    }
    if (m_folders.isEmpty()) {
        m_folders.append(directory().absolutePath());
    }
    done(QDialog::Accepted); // not accept(), which would open the folder instead
}

} // namespace tidewright
