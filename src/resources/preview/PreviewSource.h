// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace tidewright {

/// One object as the preview panel shows it.
struct PreviewItem
{
    QString title;
    QString text; ///< YAML
    QString filePath; ///< where the text lies in the cache directory; empty when it could not be written
};

/// What the preview panel shows: the items of whoever made itself its source last. Main thread.
class PreviewSource
{
public:
    /// No item means that there is nothing to show, for the given reason.
    using PreviewReady = std::function<void(const std::optional<PreviewItem> &item, const QString &reason)>;

    virtual ~PreviewSource() = default;
    virtual int numberOfPreviewItems() const = 0;
    /// The name of the item at `index`, known before it is loaded.
    virtual QString previewItemTitle(int index) const = 0;
    /// Calls back once, at once or later.
    virtual void loadPreviewItem(int index, PreviewReady ready) = 0;
    /// With a single item there is nothing to walk through: moves the selection itself by that many rows.
    virtual void movePreviewSelection(int rows) = 0;
};

} // namespace tidewright
