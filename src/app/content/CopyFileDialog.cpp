// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/CopyFileDialog.h"

#include "app/content/FileDialogSelection.h"
#include "platform/text/DisplayText.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListView>

#include <algorithm>

namespace tidewright {

namespace {

const auto usualDestination = QStringLiteral("/tmp/");
constexpr QSize fieldSize(200, 24);

} // namespace

void CopyFileDialog::open(QWidget *parent, QObject *receiver, const QString &target, Chosen chosen)
{
    auto *dialog = new CopyFileDialog(parent, target);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QDialog::accepted, receiver,
        [dialog, chosen = std::move(chosen)] { chosen(dialog->paths(), dialog->destination()); });
    dialog->show();
}

CopyFileDialog::CopyFileDialog(QWidget *parent, const QString &target)
    : QFileDialog(parent, tr("Copy File"))
    , m_destination(new QLineEdit)
{
    // The desktops' own dialogs choose files or folders, never both, and take no extra row.
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::ReadOnly);
    setFileMode(QFileDialog::ExistingFiles);
    setFilter(QDir::AllDirs | QDir::Files | QDir::NoDotAndDotDot);
    const auto nameButton = [this] { setLabelText(QFileDialog::Accept, tr("Copy")); };
    nameButton();
    if (const auto *list = findChild<QListView *>(QStringLiteral("listView"))) {
        // Qt has just named it "Open" when a folder is selected.
        connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this, nameButton);
    }
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
        auto *into = new QLabel(display_text::clean(target));
        into->setTextFormat(Qt::PlainText); // names come from the cluster
        grid->addWidget(into, row + 2, 1);
    }
}

QStringList CopyFileDialog::paths() const
{
    const QStringList chosen = selectedInList(*this);
    return chosen.isEmpty() ? selectedFiles() : chosen;
}

QString CopyFileDialog::destination() const
{
    return m_destination->text().isEmpty() ? usualDestination : m_destination->text();
}

/// A selected folder is to be copied, where Qt would open it; a double click has opened it by then.
void CopyFileDialog::accept()
{
    const QStringList chosen = paths();
    const bool hasFolder = std::any_of(chosen.begin(), chosen.end(), [this](const QString &path) {
        return QFileInfo(path).isDir() && path != directory().absolutePath();
    });
    if (hasFolder) {
        done(QDialog::Accepted);
        return;
    }
    QFileDialog::accept();
}

} // namespace tidewright
