// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "resources/kinds/ObjectName.h"
#include "resources/kinds/ResourceKind.h"
#include "resources/preview/PreviewFiles.h"

#include <array>

namespace tidewright {

class ResourceTableView;

/// The selected rows of one table as previews: each object's YAML, fetched by kubectl and kept for five
/// seconds, and what the user asks for beyond it: a description and events, told in the window's console.
/// Owned by the table; main thread.
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
    void loadDescription(DescriptionReady ready) override;
    void loadEvents(const ObjectStory &story, EventsReady ready) override;
    void endLoading() override;
    void movePreviewSelection(int rows) override;
    bool canFollow(const Relation &relation) const override;
    void follow(const Relation &relation) override;

    /// The window shows something else now: nothing fetched before is shown again.
    void forget();

Q_SIGNALS:
    /// The user wants to see what has to do with `object`.
    void followed(const tidewright::ObjectName &object, const tidewright::Relation &relation);

private:
    struct Request
    {
        QString context;
        QString shown; ///< the window's namespace
        ObjectName object;
    };

    ObjectName objectAt(int index) const;
    bool isStillShown(const Request &request) const;
    QString obstacle() const;
    void fetch(const PreviewReady &ready);
    void addPods(ObjectStory &story) const;
    /// Runs a command for a face of the item, which the console tells. Calls back with what it printed, on
    /// the main thread, or with why there is nothing.
    template <typename Content>
    void ask(PreviewFace face, const QStringList &arguments,
        const std::function<Content(const QByteArray &)> &read,
        const std::function<void(const std::optional<Content> &, const QString &)> &done);

    ResourceTableView &m_view;
    WindowState &m_window;
    const ResourceKind &m_kind;
    PreviewFiles m_files;
    Request m_item; ///< that was asked for last
    std::array<std::shared_ptr<Shell>, previewFaceCount> m_shells; ///< of the faces that are being fetched
};

} // namespace tidewright
