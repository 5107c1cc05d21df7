// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/PreviewSource.h"

#include <QHash>

namespace tidewright {

/// The preview files of one table, in the application's cache directory, readable by the user alone. Main thread.
class PreviewFiles
{
public:
    /// The file of an object: NAMESPACE-NAME.yaml.
    static QString pathFor(const QString &nameSpace, const QString &name);

    /// The item whose file was written no more than five seconds ago.
    std::optional<PreviewItem> recent(const QString &path) const;
    /// Writes the file and remembers when. A file that cannot be written is said in a diagnostic and the item is shown
    /// all the same.
    PreviewItem store(const QString &path, const QString &title, const QByteArray &text);

    /// Removes every preview file that this process wrote; for the end of the application.
    static void removeAll();

private:
    struct Cached
    {
        double time = 0; // seconds since 1970
        PreviewItem item; // kept beside the file: another table may write the same file name
    };
    QHash<QString, Cached> m_cacheTimes;
};

} // namespace tidewright
