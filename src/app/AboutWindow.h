// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

namespace tidewright {

/// Says what this program is and which version. Closing only hides it.
class AboutWindow : public QDialog
{
    Q_OBJECT
public:
    explicit AboutWindow(QWidget *parent = nullptr);
};

} // namespace tidewright
