// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractNativeEventFilter>
#include <QHash>
#include <QObject>

class QWindow;

namespace tidewright {

/// Tells of top-level windows whether somebody could see them: not those that are minimised, or on another
/// desktop than the one that is shown. What is below other windows counts as seen. Main thread.
///
/// On X11 both desktops are compared (Extended Window Manager Hints), because a compositor keeps the windows
/// of hidden ones mapped. Wayland tells nothing of desktops: there a window is out of sight once the
/// compositor wants no more frames of it, as far as Qt takes note of that (QWindow::isExposed).
class WindowSight : public QObject, private QAbstractNativeEventFilter
{
    Q_OBJECT
public:
    static WindowSight &shared();

    /// As of now; from then on `changed` tells when it is otherwise. Null is out of sight.
    bool sees(QWindow *window);

Q_SIGNALS:
    void changed();

private:
    WindowSight();

    bool eventFilter(QObject *window, QEvent *event) override;
    bool nativeEventFilter(const QByteArray &type, void *message, qintptr *result) override;
    void lookAgain(QWindow &window);

    QHash<QWindow *, bool> m_seen;
};

} // namespace tidewright
