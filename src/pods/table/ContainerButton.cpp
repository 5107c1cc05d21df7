// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/table/ContainerButton.h"

#include "platform/text/DisplayText.h"

#include <QPainter>

namespace tidewright {

namespace {

constexpr qreal cornerRadius = 4.0;
constexpr qreal borderWidth = 1.0;
constexpr int sidePadding = 8;

} // namespace

ContainerButton::ContainerButton(const QString &container, const ObjectName &pod, QWidget *parent)
    : QPushButton(display_text::withoutMnemonics(container), parent)
    , m_pod(pod)
    , m_container(container)
{
    setCheckable(true);
    setAttribute(Qt::WA_Hover);
    // Keys stay with the table: its context menu offers the containers of a row too.
    setFocusPolicy(Qt::NoFocus);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.92);
    setFont(small);
    const QString place = pod.nameSpace.isEmpty() ? QString() : pod.nameSpace + QLatin1Char('/');
    setAccessibleName(place + pod.name + QLatin1Char(':') + container);
    setToolTip(display_text::toolTip(tr("Choose this container: %1").arg(accessibleName())));
    resize(sizeHint());
}

QSize ContainerButton::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(display_text::name(m_container)) + 2 * sidePadding,
        fontMetrics().height() + 4};
}

void ContainerButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette &colours = palette();
    const QBrush fill = isChecked() ? colours.brush(QPalette::Highlight)
        : underMouse()              ? colours.brush(QPalette::Midlight)
                                    : colours.brush(QPalette::Button);
    const qreal inset = borderWidth / 2;
    painter.setPen(QPen(
        isChecked() ? colours.color(QPalette::HighlightedText) : colours.color(QPalette::Mid), borderWidth));
    painter.setBrush(fill);
    painter.drawRoundedRect(
        QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius, cornerRadius);
    painter.setPen(colours.color(isChecked() ? QPalette::HighlightedText : QPalette::ButtonText));
    painter.drawText(rect(), Qt::AlignCenter, display_text::name(m_container));
}

} // namespace tidewright
