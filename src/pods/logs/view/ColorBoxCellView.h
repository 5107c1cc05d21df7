// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

namespace tidewright {

/// The cell of the colour index that shows a source's colour.
class ColorBoxCellView : public QWidget
{
    Q_OBJECT
public:
    explicit ColorBoxCellView(QWidget *parent = nullptr);

    QFrame *colorBox() const { return m_colorBox; }
    /// An invalid colour leaves the box unfilled, with its frame alone.
    void setColor(const QColor &color);

private:
    QFrame *m_colorBox;
};

} // namespace tidewright
