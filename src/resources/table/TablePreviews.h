// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/kinds/ObjectName.h"
#include "resources/kinds/ResourceKind.h"
#include "resources/preview/PreviewFiles.h"

namespace tidewright {

class ResourceTableView;

/// The selected rows of one table as previews: each object's YAML, fetched by kubectl and kept for five
/// seconds. Owned by the table; main thread.
class TablePreviews : public QObject, public PreviewSource
{
    Q_OBJECT
public:
    /// `kind` must outlive the previews.
    TablePreviews(ResourceTableView &view, WindowState &window, const ResourceKind &kind);
    ~TablePreviews() override;

    int numberOfPreviewItems() const override;
    QString previewItemTitle(int index) const override;
    void loadPreviewItem(int index, PreviewReady ready) override;
    void movePreviewSelection(int rows) override;

    /// The window shows something else now: nothing fetched before is shown again.
    void forget();

private:
    struct Request
    {
        QString context;
        QString shown; ///< the window's namespace
        ObjectName object;
    };

    ObjectName objectAt(int index) const;
    bool isCurrent(const Request &request) const;
    void fetch(const Request &request, const PreviewReady &ready);
    void endFetch();

    ResourceTableView &m_view;
    WindowState &m_window;
    const ResourceKind &m_kind;
    PreviewFiles m_files;
    std::shared_ptr<Shell> m_shell; // of the fetch under way
};

} // namespace tidewright
