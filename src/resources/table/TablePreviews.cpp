// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/TablePreviews.h"

#include "platform/threads/MainQueue.h"
#include "resources/changes/ClusterChange.h"
#include "resources/table/ResourceTableView.h"

namespace tidewright {

QString nothingPreviewed()
{
    return QStringLiteral("Nothing was previewed");
}

TablePreviews::TablePreviews(ResourceTableView &view, WindowState &window, const ResourceKind &kind)
    : m_view(view)
    , m_window(window)
    , m_kind(kind)
{
}

TablePreviews::~TablePreviews()
{
    endFetch();
}

int TablePreviews::numberOfPreviewItems() const
{
    return m_view.selectedRowCount();
}

QString TablePreviews::previewItemTitle(int index) const
{
    const std::vector<int> rows = m_view.selectedRowsInOrder();
    return index < std::ssize(rows)
        ? m_view.arrangedObjects().arrangedRow(rows[static_cast<std::size_t>(index)])->name
        : QString();
}

void TablePreviews::loadPreviewItem(int index, PreviewReady ready)
{
    endFetch(); // nobody waits for an earlier one any more
    const Request request{m_window.currentContext(), m_window.currentNamespace(), previewItemTitle(index)};
    if (const auto recent
        = m_files.recent(request.context, PreviewFiles::pathFor(request.nameSpace, request.name))) {
        ready(recent, QString());
        return;
    }
    if (const QString reason = whyNotByName(m_kind, {request.name}, request.nameSpace); !reason.isEmpty()) {
        ready(std::nullopt, nothingPreviewed() + QLatin1String(": ") + reason);
        return;
    }
    fetch(request, ready);
}

bool TablePreviews::isCurrent(const Request &request) const
{
    return request.context == m_window.currentContext() && request.nameSpace == m_window.currentNamespace();
}

void TablePreviews::fetch(const Request &request, const PreviewReady &ready)
{
    const QStringList arguments = QStringList{QStringLiteral("kubectl"), QStringLiteral("get")}
        + separateNamespaceArguments(request.nameSpace)
        + QStringList{m_kind.resourceName, request.name, QStringLiteral("-o"), QStringLiteral("yaml")};
    const QString path = PreviewFiles::pathFor(request.nameSpace, request.name);
    endFetch();
    m_shell = m_window.kubeCtl().makeShell();
    m_shell->runAsync(
        arguments, false, nullptr, [self = QPointer(this), request, path, ready](const ShellResult &result) {
            const QString failure = result.error ? QString() : PreviewFiles::write(path, result.output);
            postToMain(self, [request, path, ready, result, failure](TablePreviews &previews) {
                if (result.error || !previews.isCurrent(request)) {
                    ready(std::nullopt, result.error.value_or(QString()));
                } else {
                    ready(previews.m_files.store(request.context, path, request.name, result.output, failure),
                        QString());
                }
            });
        });
}

void TablePreviews::endFetch()
{
    if (m_shell) {
        m_shell->cancel();
        m_shell.reset();
    }
}

void TablePreviews::forget()
{
    endFetch();
    m_files = {};
}

void TablePreviews::movePreviewSelection(int rows)
{
    const std::vector<int> selected = m_view.selectedRowsInOrder();
    const int target = selected.empty() ? 0 : selected.front() + rows;
    if (target >= 0 && target < m_view.arrangedObjects().rowCount()) {
        m_view.selectRow(target);
    }
}

} // namespace tidewright
