// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/preview/PreviewSource.h"

#include <QHash>

namespace tidewright {

/// The application's cache directory, where preview files go; empty when there is none. Set once at start-up.
QString cacheDirectory();
void setCacheDirectory(const QString &path);

/// The preview files of one table, in the application's cache directory, readable by the user alone. Main
/// thread.
class PreviewFiles
{
public:
    /// The file of an object: NAMESPACE-NAME.yaml.
    static QString pathFor(const QString &nameSpace, const QString &name);

    /// Writes an object's text for the user's eyes only; returns what went wrong, or the empty text. Any
    /// thread.
    static QString write(const QString &path, const QByteArray &text);

    /// What is shown of an object's text: its first 4 MiB, with longer lines than 4,096 characters broken,
    /// and where the whole is when that is not all; `path` is empty when it could not be written. Any thread.
    static QString shownText(const QByteArray &text, const QString &path);

    /// The item whose file was written for that context no more than five seconds ago.
    std::optional<PreviewItem> recent(const QString &context, const QString &path) const;
    /// Remembers an item and when its file was written. For one whose file could not be (`writeFailure`)
    /// that is said in a diagnostic, and it has none.
    void store(const QString &context, PreviewItem item, const QString &writeFailure);

    /// Removes every preview file that this process wrote; for the end of the application.
    static void removeAll();
    /// Removes those that a killed process has left, unless another one lives that may be using them. Once,
    /// when the cache directory is known.
    static void sweep();

private:
    struct Cached
    {
        double time = 0; // seconds since 1970
        QString context; // objects of several clusters share a file name
        PreviewItem item; // kept beside the file: another table may write the same file name
    };
    QHash<QString, Cached> m_cacheTimes;
};

} // namespace tidewright
