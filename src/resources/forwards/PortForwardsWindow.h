// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/forwards/PortForwards.h"

#include <QWidget>

class QPushButton;
class QTreeView;

namespace tidewright {

/// The list of port forwards, one window for the whole program: where each is, how it does, and the way to
/// its address. Main thread.
class PortForwardsWindow : public QWidget
{
    Q_OBJECT
public:
    /// Shows the one of `PortForwards::shared()` in front.
    static void present();
    /// Closes that one, if it is there.
    static void dismiss();

    /// `forwards` must outlive the window.
    explicit PortForwardsWindow(PortForwards &forwards);

    /// Opens the address of the chosen forward in the user's browser.
    void openAddress();
    void copyAddress();
    /// Begins again at once.
    void tryAgain();
    void stop();

private:
    PortForward *chosen() const;
    void buildLayout();
    void updateButtons();

    PortForwards &m_forwards;
    QTreeView *m_view;
    QPushButton *m_open;
    QPushButton *m_copy;
    QPushButton *m_again;
    QPushButton *m_stop;
};

} // namespace tidewright
