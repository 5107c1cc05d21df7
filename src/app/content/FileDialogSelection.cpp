// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/FileDialogSelection.h"

#include <QFileDialog>
#include <QFileSystemModel>
#include <QListView>

namespace tidewright {

QStringList selectedInList(const QFileDialog &dialog)
{
    QStringList paths;
    // The other view of the dialog, the one with details, shares the list's selection.
    if (const auto *list = dialog.findChild<QListView *>(QStringLiteral("listView"))) {
        for (const QModelIndex &index : list->selectionModel()->selectedRows()) {
            paths.append(index.data(QFileSystemModel::FilePathRole).toString());
        }
    }
    return paths;
}

} // namespace tidewright
