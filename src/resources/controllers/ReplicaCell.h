// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ObjectName.h"

#include <QSlider>
#include <QSpinBox>
#include <QWidget>

namespace tidewright {

/// A slider that takes no part in scrolling, goes where its groove is pressed, and tells when the user lets
/// go of it.
class ReplicaSlider : public QSlider
{
    Q_OBJECT
public:
    explicit ReplicaSlider(QWidget *parent);

Q_SIGNALS:
    void letGo(); ///< the mouse button, a key, or the keyboard focus
    void abandoned(); ///< Escape

protected:
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};

/// The number beside the slider, for typing.
class ReplicaField : public QSpinBox
{
    Q_OBJECT
public:
    explicit ReplicaField(QWidget *parent);

Q_SIGNALS:
    void typed(); ///< the text is being changed
    void letGo(); ///< Return, or the keyboard focus
    void abandoned(); ///< Escape

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
};

/// A deployment's replica count as a slider with its number beside it. While the user changes it, and until
/// the change has been answered, what the cluster says is kept back. A change that goes out of sight before
/// the user has let go is given up. Main thread only.
class ReplicaCell : public QWidget
{
    Q_OBJECT
public:
    ReplicaCell(const ObjectName &deployment, QWidget *parent);

    const ObjectName &deployment() const { return m_deployment; }
    /// What the cluster says.
    void setDesired(qint64 desired);
    bool isBeingChanged() const { return m_changing || m_asked || m_slider->isSliderDown(); }
    /// The change that was chosen is made, or will not be: shows what the cluster says again.
    void answered();
    /// Moves the keyboard focus into the number.
    void startTyping();

    QSlider *slider() const { return m_slider; }
    QSpinBox *field() const { return m_field; }

Q_SIGNALS:
    /// Once for each change, after the user has let go and what was going on then is done: the keyboard focus
    /// is also lost in the middle of other work. `answered` is to follow.
    void chosen(qint64 desired);

protected:
    void hideEvent(QHideEvent *event) override;

private:
    void showCluster();
    void showCount(int count);
    void change(int count);
    void finish();
    void announce();
    void abandon();

    const ObjectName m_deployment;
    ReplicaSlider *m_slider;
    ReplicaField *m_field;
    int m_desired = 0; // what the cluster said last
    int m_startedFrom = 0; // what the cluster said when the change began
    bool m_changing = false;
    bool m_asked = false;
};

} // namespace tidewright
