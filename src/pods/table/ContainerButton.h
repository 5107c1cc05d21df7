// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ObjectName.h"

#include <QPushButton>

namespace tidewright {

/// The toggle button of one container of one pod. Its title is the container's name, made fit to be shown;
/// its accessible name is "POD:CONTAINER", or "NAMESPACE/POD:CONTAINER" among those of all namespaces.
class ContainerButton : public QPushButton
{
    Q_OBJECT
public:
    /// The pod has a namespace where the table shows all of them, else none.
    ContainerButton(const QString &container, const ObjectName &pod, QWidget *parent);

    const ObjectName &pod() const { return m_pod; }
    const QString &container() const { return m_container; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const ObjectName m_pod;
    const QString m_container;
};

} // namespace tidewright
