// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/controllers/ReplicaCell.h"

#include "platform/text/DisplayText.h"
#include "resources/table/RowDelegate.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStyleOptionSlider>

#include <limits>
#include <utility>

namespace tidewright {

namespace {

constexpr int smallestRange = 10;
constexpr int fieldWidth = 58;
constexpr int sideRoom = 12;
constexpr int fieldFrame = 6; // between the number and the edge of its field

/// Room for twice the count, so that the knob of a large deployment can move both ways.
int rangeFor(int count)
{
    return qMax(smallestRange, count > std::numeric_limits<int>::max() / 2 ? count : 2 * count);
}

/// Escape gives a change up here, whatever it means elsewhere in the window.
bool isEscape(const QEvent &event)
{
    return event.type() == QEvent::ShortcutOverride
        && static_cast<const QKeyEvent &>(event).key() == Qt::Key_Escape;
}

} // namespace

ReplicaSlider::ReplicaSlider(QWidget *parent)
    : QSlider(Qt::Horizontal, parent)
{
    setPageStep(1);
}

bool ReplicaSlider::event(QEvent *event)
{
    if (isEscape(*event)) {
        event->accept();
        return true;
    }
    return QSlider::event(event);
}

void ReplicaSlider::mousePressEvent(QMouseEvent *event)
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect handle = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
    if (event->button() == Qt::LeftButton && !handle.contains(event->position().toPoint())) {
        const QRect groove
            = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
        const int offset = qRound(event->position().x()) - groove.left() - handle.width() / 2;
        setValue(QStyle::sliderValueFromPosition(
            minimum(), maximum(), offset, groove.width() - handle.width(), option.upsideDown));
    }
    QSlider::mousePressEvent(event);
    if (event->button() == Qt::LeftButton && !isSliderDown()) {
        setSliderDown(true); // the knob cannot stand exactly where the groove was pressed
    }
}

void ReplicaSlider::mouseReleaseEvent(QMouseEvent *event)
{
    QSlider::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton) {
        setSliderDown(false);
        Q_EMIT letGo();
    }
}

void ReplicaSlider::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        setSliderDown(false);
        Q_EMIT abandoned();
    } else {
        QSlider::keyPressEvent(event);
    }
}

void ReplicaSlider::keyReleaseEvent(QKeyEvent *event)
{
    QSlider::keyReleaseEvent(event);
    if (!event->isAutoRepeat() && !isSliderDown()) {
        Q_EMIT letGo();
    }
}

void ReplicaSlider::focusOutEvent(QFocusEvent *event)
{
    QSlider::focusOutEvent(event);
    if (!isSliderDown()) {
        Q_EMIT letGo();
    }
}

void ReplicaSlider::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // the table scrolls
}

ReplicaField::ReplicaField(QWidget *parent)
    : QSpinBox(parent)
{
    setRange(0, std::numeric_limits<int>::max());
    setButtonSymbols(NoButtons);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setKeyboardTracking(false);
    setFixedWidth(fieldWidth);
    connect(lineEdit(), &QLineEdit::textEdited, this, &ReplicaField::typed);
}

bool ReplicaField::event(QEvent *event)
{
    if (isEscape(*event)) {
        event->accept();
        return true;
    }
    return QSpinBox::event(event);
}

void ReplicaField::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        interpretText();
        Q_EMIT letGo();
        break;
    case Qt::Key_Escape:
        Q_EMIT abandoned();
        break;
    default:
        QSpinBox::keyPressEvent(event);
    }
}

void ReplicaField::focusOutEvent(QFocusEvent *event)
{
    QSpinBox::focusOutEvent(event);
    // Who looks at another window for a moment has not finished typing.
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason) {
        interpretText();
        Q_EMIT letGo();
    }
}

void ReplicaField::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // the table scrolls
}

ReplicaCell::ReplicaCell(const ObjectName &deployment, QWidget *parent)
    : QWidget(parent)
    , m_deployment(deployment)
    , m_slider(new ReplicaSlider(this))
    , m_field(new ReplicaField(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(sideRoom, 1, RowDelegate::numberPadding - fieldFrame, 1);
    layout->addWidget(m_slider, 1);
    layout->addWidget(m_field);
    for (QWidget *part : {static_cast<QWidget *>(m_slider), static_cast<QWidget *>(m_field)}) {
        part->setAccessibleName(tr("%1 replicas").arg(deployment.name));
        part->setToolTip(display_text::toolTip(tr("Scale %1").arg(deployment.name)));
    }
    connect(m_slider, &QSlider::valueChanged, this, &ReplicaCell::change);
    connect(m_field, &QSpinBox::valueChanged, this, &ReplicaCell::change);
    connect(m_field, &ReplicaField::typed, this, [this] { m_changing = true; });
    connect(m_slider, &ReplicaSlider::letGo, this, &ReplicaCell::finish);
    connect(m_field, &ReplicaField::letGo, this, &ReplicaCell::finish);
    connect(m_slider, &ReplicaSlider::abandoned, this, &ReplicaCell::abandon);
    connect(m_field, &ReplicaField::abandoned, this, &ReplicaCell::abandon);
    showCluster();
}

void ReplicaCell::setDesired(qint64 desired)
{
    m_desired = static_cast<int>(qBound(qint64(0), desired, qint64(std::numeric_limits<int>::max())));
    if (!isBeingChanged()) {
        showCluster();
    }
}

void ReplicaCell::showCluster()
{
    m_startedFrom = m_desired;
    showCount(m_desired);
}

void ReplicaCell::showCount(int count)
{
    const QSignalBlocker quietSlider(m_slider);
    const QSignalBlocker quietField(m_field);
    if (!m_slider->isSliderDown()) {
        m_slider->setRange(0, qMax(rangeFor(m_desired), count));
    }
    m_slider->setValue(count);
    m_field->setValue(count);
}

void ReplicaCell::change(int count)
{
    m_changing = true;
    showCount(count);
}

void ReplicaCell::finish()
{
    if (m_asked) {
        return;
    }
    m_asked = std::exchange(m_changing, false) && m_field->value() != m_startedFrom;
    if (m_asked) {
        QMetaObject::invokeMethod(this, &ReplicaCell::announce, Qt::QueuedConnection);
    } else if (!isBeingChanged()) {
        showCluster();
    }
}

void ReplicaCell::announce()
{
    if (isVisible()) {
        Q_EMIT chosen(m_field->value());
    } else {
        answered(); // nobody would know what a question is about
    }
}

/// A row that vanishes takes the focus from its cell. That is no consent, and no time for changes.
void ReplicaCell::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous()) {
        m_slider->setSliderDown(false);
        abandon();
    }
}

void ReplicaCell::abandon()
{
    m_changing = false;
    if (!m_asked) {
        showCluster();
    }
}

void ReplicaCell::answered()
{
    m_asked = false;
    m_changing = false;
    showCluster();
}

void ReplicaCell::startTyping()
{
    m_field->setFocus(Qt::OtherFocusReason);
    m_field->selectAll();
}

} // namespace tidewright
