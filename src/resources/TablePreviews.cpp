// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/TablePreviews.h"

#include "platform/MainQueue.h"
#include "resources/ResourceTableView.h"

namespace tidewright {

TablePreviews::TablePreviews(ResourceTableView &view, WindowState &window, const QString &resourceName)
    : m_view(view)
    , m_window(window)
    , m_resourceName(resourceName)
{
}

int TablePreviews::numberOfPreviewItems() const
{
    return static_cast<int>(m_view.selectedRowsInOrder().size());
}

QString TablePreviews::previewItemTitle(int index) const
{
    const QModelIndexList rows = m_view.selectedRowsInOrder();
    return index < rows.size() ? m_view.arrangedObjects().arrangedRow(rows.at(index).row())->name : QString();
}

void TablePreviews::loadPreviewItem(int index, PreviewReady ready)
{
    const QString name = previewItemTitle(index);
    const QString path = PreviewFiles::pathFor(m_window.currentNamespace(), name);
    if (const auto recent = m_files.recent(path)) {
        ready(recent, QString());
        return;
    }
    // The command names no context: it must be the window's that the kubeconfig says now.
    m_window.agreeWithKubeConfig([self = QPointer(this), name, path, ready = std::move(ready)](bool agreed) {
        if (self && agreed) {
            self->fetch(name, path, ready);
        } else {
            ready(std::nullopt, tr("The kubeconfig could not be switched to this window's context."));
        }
    });
}

void TablePreviews::fetch(const QString &name, const QString &path, const PreviewReady &ready)
{
    const QStringList arguments{QStringLiteral("kubectl"), QStringLiteral("get"), QStringLiteral("-n"),
        m_window.currentNamespace(), m_resourceName, name, QStringLiteral("-o"), QStringLiteral("yaml")};
    m_window.kubeCtl().makeShell()->runAsync(
        arguments, false, nullptr, [self = QPointer(this), name, path, ready](const ShellResult &result) {
            postToMain(self, [name, path, ready, result](TablePreviews &previews) {
                if (result.error) {
                    ready(std::nullopt, *result.error);
                } else {
                    ready(previews.m_files.store(path, name, result.output), QString());
                }
            });
        });
}

void TablePreviews::movePreviewSelection(int rows)
{
    const QModelIndexList selected = m_view.selectedRowsInOrder();
    const int target = selected.isEmpty() ? 0 : selected.first().row() + rows;
    if (target >= 0 && target < m_view.arrangedObjects().rowCount()) {
        m_view.selectRow(target);
    }
}

} // namespace tidewright
