// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <utility>
#include <vector>

namespace tidewright {

/// Copies of a kubeconfig's files, each beside its file, from before a kubectl changes them until what it
/// wrote has been read back: kubectl empties a file before it writes it, and a disk may be full. Putting a
/// copy back needs no room. They go with the object; those of a program that was killed stay, for `recover`.
/// Waits for the disk: not on the main thread.
class KubeConfigBackup
{
public:
    /// `files` is a value of KUBECONFIG; links are followed, and files that are not there passed over.
    explicit KubeConfigBackup(const QString &files);
    ~KubeConfigBackup();
    KubeConfigBackup(const KubeConfigBackup &) = delete;
    KubeConfigBackup &operator=(const KubeConfigBackup &) = delete;

    /// Why no copy could be made, as a sentence; then nothing may be changed.
    const QString &problem() const { return m_problem; }

    /// Puts back every file that differs from its copy. Returns what could not be, naming the copy, which
    /// then stays.
    QString restore() const;

    /// What a killed program left: copies go when the files read well, and take the place of files that do
    /// not. Returns what could not be put back.
    static QString recover(const QString &files, const std::function<bool()> &readsWell);

private:
    struct Entry
    {
        QString file;
        QString copy;
    };

    static std::vector<Entry> entriesOf(const QString &files);
    static QString putBack(const Entry &entry);

    std::vector<Entry> m_entries;
    QString m_problem;
};

} // namespace tidewright
