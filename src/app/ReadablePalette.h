// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace tidewright {

/// Some desktop themes leave the colour of quiet texts (placeholders, group headers) black on a dark
/// background. While this lives, that colour is one between text and background, also after the theme
/// changes. One per application.
class ReadablePalette : public QObject
{
    Q_OBJECT
public:
    explicit ReadablePalette(QObject *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void apply();

    bool m_applying = false;
};

} // namespace tidewright
