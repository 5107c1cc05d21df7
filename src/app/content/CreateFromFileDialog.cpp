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

void CreateFromFileDialog::open(QWidget *parent, QObject *receiver, const Texts &texts, Chosen chosen)
{
    auto *dialog = new CreateFromFileDialog(parent, texts);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QDialog::accepted, receiver, [dialog, chosen = std::move(chosen)] {
        chosen(dialog->m_folders.isEmpty() ? dialog->selectedFiles() : dialog->m_folders);
    });
    dialog->show();
}

CreateFromFileDialog::CreateFromFileDialog(QWidget *parent, const Texts &texts)
    : QFileDialog(parent, texts.title)
{
    // The desktops' own dialogs choose files or folders, never both.
    setOption(QFileDialog::DontUseNativeDialog);
    setFileMode(QFileDialog::ExistingFiles);
    setNameFilter(tr("YAML files (*.yaml)"));
    setFilter(QDir::AllDirs | QDir::Files | QDir::NoDotAndDotDot);
    setOption(QFileDialog::ReadOnly);
    setLabelText(QFileDialog::Accept, texts.accept);
    if (auto *grid = qobject_cast<QGridLayout *>(layout())) {
        auto *message = new QLabel(texts.message);
        message->setTextFormat(Qt::PlainText);
        auto *folder = new QPushButton(texts.folder);
        folder->setAutoDefault(false);
        folder->setToolTip(tr("Takes all YAML files in the selected folder and the folders below it"));
        connect(folder, &QPushButton::clicked, this, &CreateFromFileDialog::takeFolder);
        const int row = grid->rowCount();
        grid->addWidget(message, row, 0, 1, 2);
        grid->addWidget(folder, row, 2);
        auto *target = new QLabel(display_text::clean(texts.place));
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
