// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/ColorBoxCellView.h"

#include <QHBoxLayout>
#include <QPalette>

namespace tidewright {

namespace {

constexpr int side = 13;

} // namespace

ColorBoxCellView::ColorBoxCellView(QWidget *parent)
    : QWidget(parent)
    , m_colorBox(new QFrame)
{
    setAttribute(Qt::WA_TransparentForMouseEvents); // the table hears the click
    m_colorBox->setFixedSize(side, side);
    m_colorBox->setFrameShape(QFrame::Box);
    // In a table the roles would be the table's.
    m_colorBox->setBackgroundRole(QPalette::Window);
    m_colorBox->setForegroundRole(QPalette::WindowText);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 0, 6, 0);
    layout->addWidget(m_colorBox, 0, Qt::AlignCenter);
}

void ColorBoxCellView::setColor(const QColor &color)
{
    m_colorBox->setAutoFillBackground(color.isValid());
    if (color.isValid()) {
        QPalette palette = m_colorBox->palette();
        palette.setColor(QPalette::Window, color);
        palette.setColor(QPalette::WindowText, color);
        m_colorBox->setPalette(palette);
    }
}

} // namespace tidewright
