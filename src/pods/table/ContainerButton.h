// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPushButton>

namespace tidewright {

/// The toggle button of one container of one pod. Its title is the container's name, made fit to be shown;
/// its accessible name is "POD:CONTAINER".
class ContainerButton : public QPushButton
{
    Q_OBJECT
public:
    ContainerButton(const QString &container, const QString &pod, QWidget *parent);

    const QString &pod() const { return m_pod; }
    const QString &container() const { return m_container; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const QString m_pod;
    const QString m_container;
};

} // namespace tidewright
