// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QWidget>

class QLabel;

namespace tidewright {

/// What a line of a unified diff, as `diff -u` prints it, tells.
enum class DiffLine { Context, Header, Added, Removed };

/// The lines must be given in their order; `isInHeader` is kept between them and false at first. Pure.
DiffLine diffLine(QStringView line, bool &isInHeader);

/// Shows a unified diff in colours, in a typewriter's letters. Of a large one only the beginning is shown,
/// and all of it can be saved. Main thread.
class DiffView : public QWidget
{
    Q_OBJECT
public:
    /// Bytes; a line that would be cut is left out.
    static constexpr qsizetype shownAtMost = qsizetype(1) << 20;

    /// `diff` is UTF-8.
    explicit DiffView(const QByteArray &diff, QWidget *parent = nullptr);

    /// Writes the whole diff to a file, in the background. What has become of it stands below the diff.
    void saveTo(const QString &path);

private:
    void askWhereToSave();

    const QByteArray m_diff;
    QLabel *m_note = nullptr; ///< null while everything is shown
};

} // namespace tidewright
