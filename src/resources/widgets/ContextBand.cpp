// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/widgets/ContextBand.h"

#include "resources/widgets/NamedImages.h"

#include <QPainter>

#include <array>

namespace tidewright {

namespace {

constexpr int bandHeight = 4;

struct Shades
{
    QRgb onLight;
    QRgb onDark;
};

constexpr std::array<Shades, 6> shades{{{0, 0}, {0xFFC62828, 0xFFFF6B63}, {0xFFB26A00, 0xFFFFB340},
    {0xFF2E7D32, 0xFF66C76B}, {0xFF1565C0, 0xFF64AAF5}, {0xFF7B3FA0, 0xFFC08BE6}}};

} // namespace

QColor shadeOf(ContextColour colour)
{
    const Shades &both = shades.at(static_cast<std::size_t>(colour));
    return colour == ContextColour::None ? QColor()
                                         : QColor::fromRgb(isDarkPalette() ? both.onDark : both.onLight);
}

QString nameOf(ContextColour colour)
{
    switch (colour) {
    case ContextColour::None:
        return ContextBand::tr("None");
    case ContextColour::Red:
        return ContextBand::tr("Red");
    case ContextColour::Amber:
        return ContextBand::tr("Amber");
    case ContextColour::Green:
        return ContextBand::tr("Green");
    case ContextColour::Blue:
        return ContextBand::tr("Blue");
    case ContextColour::Violet:
        return ContextBand::tr("Violet");
    }
    return {};
}

QString nameOf(ContextAccess access)
{
    switch (access) {
    case ContextAccess::Free:
        return ContextBand::tr("Free");
    case ContextAccess::Protected:
        return ContextBand::tr("Protected");
    case ContextAccess::ReadOnly:
        return ContextBand::tr("Read-only");
    }
    return {};
}

ContextBand::ContextBand(QWidget *parent)
    : QWidget(parent)
{
    setFixedHeight(bandHeight);
    connect(&ContextPolicies::shared(), &ContextPolicies::changed, this, &ContextBand::update);
    update();
}

void ContextBand::setContext(const ContextKey &context)
{
    m_context = context;
    update();
}

void ContextBand::update()
{
    m_colour = m_context.name.isEmpty() ? ContextColour::None : ContextPolicies::policy(m_context).colour;
    setVisible(m_colour != ContextColour::None);
    setAccessibleName(
        m_colour == ContextColour::None ? QString() : tr("Colour of the context: %1").arg(nameOf(m_colour)));
    QWidget::update();
}

void ContextBand::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), shadeOf(m_colour));
}

} // namespace tidewright
