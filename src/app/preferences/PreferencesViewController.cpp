// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferences/PreferencesViewController.h"

#include "platform/text/DisplayText.h"

#include <QEvent>
#include <QGuiApplication>
#include <QLabel>

namespace tidewright {

namespace {

constexpr double hintScale = 0.9;
constexpr float hintOpacity = 0.72F; // still read with ease on both light and dark ground

/// Text that keeps in the background, whatever the colours of the desktop are.
class Hint : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::Polish || event->type() == QEvent::PaletteChange) {
            QPalette colours = palette();
            QColor text = QGuiApplication::palette().color(QPalette::WindowText);
            text.setAlphaF(hintOpacity);
            if (colours.color(QPalette::WindowText) != text) {
                colours.setColor(QPalette::WindowText, text);
                setPalette(colours);
            }
        }
        return QLabel::event(event);
    }
};

} // namespace

PreferencesViewController::PreferencesViewController(const QString &title, QWidget *parent)
    : QWidget(parent)
    , m_title(title)
{
    setAccessibleName(title);
}

QSize PreferencesViewController::preferredContentSize() const
{
    return m_preferredContentSize.isValid() ? m_preferredContentSize : sizeHint();
}

void PreferencesViewController::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_preferredContentSize.isValid()) {
        m_preferredContentSize = sizeHint();
        viewDidLoad();
    }
    window()->setWindowTitle(display_text::name(m_title));
}

QLabel *PreferencesViewController::makeHint(const QString &text, int lines)
{
    auto *hint = new Hint(text);
    hint->setTextFormat(Qt::PlainText); // paths are in some
    QFont font = hint->font();
    font.setPointSizeF(font.pointSizeF() * hintScale);
    hint->setFont(font);
    hint->setWordWrap(true);
    hint->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    hint->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    hint->setMinimumHeight(QFontMetrics(font).lineSpacing() * lines);
    return hint;
}

} // namespace tidewright
