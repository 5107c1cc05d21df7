// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ReadablePalette.h"

#include <QApplication>
#include <QPalette>

namespace tidewright {

namespace {

constexpr qreal quietness = 0.42; // 0 is the text's colour, 1 the background's

QColor between(const QColor &text, const QColor &background)
{
    const auto mix = [](qreal a, qreal b) { return a + (b - a) * quietness; };
    return QColor::fromRgbF(static_cast<float>(mix(text.redF(), background.redF())),
        static_cast<float>(mix(text.greenF(), background.greenF())),
        static_cast<float>(mix(text.blueF(), background.blueF())));
}

} // namespace

ReadablePalette::ReadablePalette(QObject *parent)
    : QObject(parent)
{
    qApp->installEventFilter(this);
    apply();
}

bool ReadablePalette::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange && !m_applying) {
        apply();
    }
    return QObject::eventFilter(watched, event);
}

void ReadablePalette::apply()
{
    const QPalette now = QApplication::palette();
    // Only this role is set, so the rest goes on following the desktop.
    QPalette quiet;
    quiet.setColor(QPalette::PlaceholderText, between(now.color(QPalette::Text), now.color(QPalette::Base)));
    m_applying = true;
    QApplication::setPalette(quiet);
    m_applying = false;
}

} // namespace tidewright
