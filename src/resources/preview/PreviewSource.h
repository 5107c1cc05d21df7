// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/story/ObjectEvents.h"
#include "resources/story/ObjectStory.h"

#include <QString>

#include <functional>
#include <optional>

namespace tidewright {

/// The ways in which the preview panel shows an object, in the order of its tabs.
enum class PreviewFace { Yaml, Describe, Events };
inline constexpr std::size_t previewFaceCount = 3;

/// One object as the preview panel shows it.
struct PreviewItem
{
    QString title;
    QString text; ///< YAML
    QString filePath; ///< where the text lies in the cache directory; empty when it could not be written
    ObjectStory story = {}; ///< as the text tells it; empty for a text that cannot be read
};

/// What the preview panel shows: the items of whoever made itself its source last. Main thread.
class PreviewSource
{
public:
    /// No item means that there is nothing to show, for the given reason.
    using PreviewReady = std::function<void(const std::optional<PreviewItem> &item, const QString &reason)>;
    /// The same of a description, and of events.
    using DescriptionReady
        = std::function<void(const std::optional<QString> &description, const QString &reason)>;
    using EventsReady
        = std::function<void(const std::optional<std::vector<ObjectEvent>> &events, const QString &reason)>;

    virtual ~PreviewSource() = default;
    virtual int numberOfPreviewItems() const = 0;
    /// The name of the item at `index`, known before it is loaded.
    virtual QString previewItemTitle(int index) const = 0;
    // Each of these calls back once, at once or later.
    virtual void loadPreviewItem(int index, PreviewReady ready) = 0;
    // These are about the item that was asked for last, wherever its row is by now.
    virtual void loadDescription(DescriptionReady ready) = 0;
    /// `story` is the item's.
    virtual void loadEvents(const ObjectStory &story, EventsReady ready) = 0;
    /// Nobody waits any more for what is being loaded.
    virtual void endLoading() = 0;
    /// With a single item there is nothing to walk through: moves the selection itself by that many rows.
    virtual void movePreviewSelection(int rows) = 0;
    /// Whether the table that a relation leads to can have the object: it may be in a namespace that is not
    /// shown.
    virtual bool canFollow(const Relation &relation) const = 0;
    /// Shows that object, or the pods of the item that was asked for last, in the table for it.
    virtual void follow(const Relation &relation) = 0;
};

} // namespace tidewright
