// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/table/TablePreviews.h"

#include "platform/threads/MainQueue.h"
#include "resources/changes/ClusterChange.h"
#include "resources/table/ResourceTableView.h"

namespace tidewright {

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

/// Without a name when there is none.
ObjectName TablePreviews::objectAt(int index) const
{
    const std::vector<int> rows = m_view.selectedRowsInOrder();
    return index < std::ssize(rows)
        ? m_view.objectAt(rows[static_cast<std::size_t>(index)], m_window.currentNamespace())
        : ObjectName();
}

QString TablePreviews::previewItemTitle(int index) const
{
    return objectAt(index).name;
}

void TablePreviews::loadPreviewItem(int index, PreviewReady ready)
{
    endFetch(); // nobody waits for an earlier one any more
    const Request request{m_window.currentContext(), m_window.currentNamespace(), objectAt(index)};
    const auto &[nameSpace, name] = request.object;
    if (const auto recent = m_files.recent(request.context, PreviewFiles::pathFor(nameSpace, name))) {
        ready(recent, QString());
        return;
    }
    if (const QString reason = whyNotByName(m_kind, {request.object}); !reason.isEmpty()) {
        ready(std::nullopt, QLatin1String("Nothing was previewed: ") + reason);
        return;
    }
    fetch(request, ready);
}

bool TablePreviews::isCurrent(const Request &request) const
{
    return request.context == m_window.currentContext() && request.shown == m_window.currentNamespace();
}

void TablePreviews::fetch(const Request &request, const PreviewReady &ready)
{
    const auto &[nameSpace, name] = request.object;
    const QStringList arguments = QStringList{QStringLiteral("kubectl"), QStringLiteral("get")}
        + separateNamespaceArguments(nameSpace)
        + QStringList{m_kind.resourceName, name, QStringLiteral("-o"), QStringLiteral("yaml")};
    const QString path = PreviewFiles::pathFor(nameSpace, name);
    endFetch();
    m_shell = m_window.kubeCtl().makeShell();
    m_shell->runAsync(
        arguments, false, nullptr, [self = QPointer(this), request, path, ready](const ShellResult &result) {
            // Beside a warning of the server there is the object all the same.
            const bool isThere = result.exitStatus == 0 && !result.output.isEmpty();
            const QString reason = isThere ? QString()
                : result.exitStatus == 0   ? QObject::tr("kubectl printed nothing that can be read.")
                                           : result.failure();
            const QString failure = isThere ? PreviewFiles::write(path, result.output) : QString();
            const QString shown
                = PreviewFiles::shownText(result.output, failure.isEmpty() ? path : QString());
            postToMain(
                self, [request, path, ready, isThere, reason, shown, failure](TablePreviews &previews) {
                    if (!isThere || !previews.isCurrent(request)) {
                        ready(std::nullopt, reason);
                    } else {
                        ready(previews.m_files.store(
                                  request.context, path, request.object.name, shown, failure),
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
