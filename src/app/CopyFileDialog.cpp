// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/CopyFileDialog.h"

#include <QFileInfo>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>

namespace tidewright {

namespace {

const auto usualDestination = QStringLiteral("/tmp/");
constexpr QSize fieldSize(200, 24);

} // namespace

void CopyFileDialog::open(QWidget *parent, QObject *receiver, Chosen chosen)
{
    auto *dialog = new CopyFileDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QDialog::accepted, receiver,
        [dialog, chosen = std::move(chosen)] { chosen(dialog->paths(), dialog->destination()); });
    dialog->show();
}

CopyFileDialog::CopyFileDialog(QWidget *parent)
    : QFileDialog(parent, tr("Copy File"))
    , m_destination(new QLineEdit)
{
    // The desktops' own dialogs choose files or folders, never both, and take no extra row.
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::ReadOnly);
    setFileMode(QFileDialog::ExistingFiles);
    setFilter(QDir::AllDirs | QDir::Files | QDir::NoDotAndDotDot);
    setLabelText(QFileDialog::Accept, tr("Copy"));
    m_destination->setPlaceholderText(usualDestination);
    m_destination->setFixedSize(fieldSize.expandedTo(QSize(0, m_destination->sizeHint().height())));
    m_destination->setObjectName(QStringLiteral("destinationField"));
    m_destination->setAccessibleName(tr("Destination Path"));
    auto *label = new QLabel(QStringLiteral("   Destination Path:"));
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setBuddy(m_destination);
    if (auto *grid = qobject_cast<QGridLayout *>(layout())) {
        const int row = grid->rowCount();
        grid->addWidget(new QLabel(QStringLiteral("Select a folder or file(s) to copy.")), row, 1);
        grid->addWidget(label, row + 1, 0);
        grid->addWidget(m_destination, row + 1, 1, Qt::AlignLeft);
    }
}

/// In this mode the dialog itself keeps folders out of selectedFiles().
QStringList CopyFileDialog::paths() const
{
    QStringList chosen;
    if (const auto *list = findChild<QListView *>(QStringLiteral("listView"))) {
        for (const QModelIndex &index : list->selectionModel()->selectedRows()) {
            chosen.append(index.data(QFileSystemModel::FilePathRole).toString());
        }
    }
    return chosen.isEmpty() ? selectedFiles() : chosen;
}

QString CopyFileDialog::destination() const
{
    return m_destination->text().isEmpty() ? usualDestination : m_destination->text();
}

/// A selected folder is to be copied; a double click has opened it by then.
void CopyFileDialog::accept()
{
    const QStringList chosen = paths();
    if (!chosen.isEmpty() && QFileInfo(chosen.first()).isDir()
        && chosen.first() != directory().absolutePath()) {
        done(QDialog::Accepted);
        return;
    }
    QFileDialog::accept();
}

} // namespace tidewright
