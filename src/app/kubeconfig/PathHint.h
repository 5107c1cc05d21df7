// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <functional>

class QLabel;

namespace tidewright {

/// Explains, in a label, the paths that stand in a field while the user types them. A path may lead to a
/// folder that is slow to answer, or never does: one look at the disk at a time, on the shell queue, and only
/// what was found for the latest text is shown. Owned by the label's pane; main thread.
class PathHint : public QObject
{
    Q_OBJECT
public:
    /// Called on the shell queue; may look at the disk.
    using Explanation = std::function<QString(const QString &text)>;

    PathHint(QLabel *label, Explanation explanation, QObject *parent);

    void explain(const QString &text);

private:
    void look();

    QLabel *m_label;
    const Explanation m_explanation;
    QString m_text;
    bool m_isLooking = false;
};

} // namespace tidewright
