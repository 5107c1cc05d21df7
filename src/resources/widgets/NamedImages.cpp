// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/widgets/NamedImages.h"

#include "platform/desktop/Bundle.h"

#include <QApplication>
#include <QFile>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QSvgRenderer>

#include <memory>

namespace tidewright {

namespace {

/// Draws an SVG in which "currentColor" stands for the palette's text colour of the moment, so that one
/// drawing serves light and dark palettes, and selected rows.
class PaletteIconEngine : public QIconEngine
{
public:
    explicit PaletteIconEngine(QByteArray svg)
        : m_svg(std::move(svg))
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QPalette palette = QApplication::palette();
        const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::WindowText;
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        rendererFor(palette.color(group, role)).render(painter, rect);
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new PaletteIconEngine(*this); }

private:
    /// Reading an image takes longer than painting it, and every row of a table has one.
    QSvgRenderer &rendererFor(const QColor &colour)
    {
        std::shared_ptr<QSvgRenderer> &renderer = m_renderers[colour.rgb()];
        if (!renderer) {
            QByteArray coloured = m_svg;
            coloured.replace("currentColor", colour.name().toUtf8());
            renderer = std::make_shared<QSvgRenderer>(coloured);
        }
        return *renderer;
    }

    QByteArray m_svg;
    QHash<QRgb, std::shared_ptr<QSvgRenderer>> m_renderers; // of a palette's few colours
};

const QHash<QString, QRgb> &solarized()
{
    static const QHash<QString, QRgb> colours{{QStringLiteral("solarized-base03"), 0xFF002B36},
        {QStringLiteral("solarized-base02"), 0xFF073642}, {QStringLiteral("solarized-base01"), 0xFF586E75},
        {QStringLiteral("solarized-base00"), 0xFF657B83}, {QStringLiteral("solarized-base0"), 0xFF839496},
        {QStringLiteral("solarized-base1"), 0xFF93A1A1}, {QStringLiteral("solarized-base2"), 0xFFEEE8D5},
        {QStringLiteral("solarized-base3"), 0xFFFDF6E3}, {QStringLiteral("solarized-yellow"), 0xFFB58900},
        {QStringLiteral("solarized-orange"), 0xFFCB4B16}, {QStringLiteral("solarized-red"), 0xFFDC322F},
        {QStringLiteral("solarized-magenta"), 0xFFD33682}, {QStringLiteral("solarized-violet"), 0xFF6C71C4},
        {QStringLiteral("solarized-blue"), 0xFF268BD2}, {QStringLiteral("solarized-cyan"), 0xFF2AA198},
        {QStringLiteral("solarized-green"), 0xFF859900}};
    return colours;
}

} // namespace

QIcon namedImage(const QString &name)
{
    static QHash<QString, QIcon> icons;
    const auto known = icons.constFind(name);
    if (known != icons.constEnd()) {
        return *known;
    }
    QIcon icon;
    QFile file(bundle::resource(QLatin1String("images/") + name + QLatin1String(".svg")));
    if (!name.isEmpty() && file.open(QIODevice::ReadOnly)) {
        icon = QIcon(new PaletteIconEngine(file.readAll()));
    }
    return *icons.insert(name, icon);
}

QColor namedColour(const QString &name)
{
    if (const auto colour = solarized().constFind(name); colour != solarized().constEnd()) {
        return QColor::fromRgba(*colour);
    }
    if (name == QLatin1String("orange")) {
        return isDarkPalette() ? QColor(0xFF, 0xA9, 0x4D) : QColor(0xB3, 0x5A, 0x00);
    }
    if (name == QLatin1String("red")) {
        return isDarkPalette() ? QColor(0xFF, 0x7B, 0x72) : QColor(0xC6, 0x28, 0x28);
    }
    return {};
}

bool isDarkPalette()
{
    return QApplication::palette().color(QPalette::Base).lightness() < 128;
}

} // namespace tidewright
