// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/settings/AtomicFile.h"

#include <QHash>
#include <QJsonObject>
#include <QString>

namespace tidewright {

/// Keys with their new values; an undefined value removes its key.
using SettingsChanges = QHash<QString, QJsonValue>;

/// The settings file on disk: one JSON object, UTF-8, at most 32 MB. Several processes may change it: each
/// changes only the keys it means to, in the file as it is at that moment, one process after the other (lock
/// file PATH.lock), and replaces it whole. Where settings.json is a symbolic link, the file it leads to is
/// replaced, not the link. Any thread; operations on the disk take as long as the disk takes.
class SettingsFile
{
public:
    enum class State {
        Missing, ///< nobody has written settings yet
        Sound,
        Damaged, ///< an ordinary file that holds something else
        Inaccessible, ///< of somebody else, a folder, a device, a broken disk: not to be touched
    };

    struct Content
    {
        State state = State::Missing;
        QJsonObject values; ///< empty unless Sound
        QString reason; ///< what is wrong with it, for a sentence; empty when nothing is
    };

    struct Outcome
    {
        bool done = false; ///< the file holds `values` now
        QJsonObject values;
        FileIdentity identity; ///< of the file with those values
        QString notice; ///< something that the user should know, done or not
    };

    explicit SettingsFile(const QString &path);

    FileIdentity identity() const { return FileIdentity::at(m_path); }
    Content read() const;

    /// Makes the changes. A damaged file is first renamed to PATH.broken-DATE-TIME, and the changes are then
    /// made to `lastKnown` instead. When anything fails (full disk, read-only folder, somebody else's file),
    /// the file stays what it was.
    Outcome change(const SettingsChanges &changes, const QJsonObject &lastKnown) const;

private:
    int makeFolder() const;
    Outcome changeLocked(const SettingsChanges &changes, const QJsonObject &lastKnown) const;
    Outcome failure(int error) const;
    QString displayPath() const;

    QByteArray m_path;
};

} // namespace tidewright
