// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "resources/kinds/ObjectName.h"

#include <QList>
#include <QStringList>
#include <QWidget>

class QLabel;

namespace tidewright {

class ContainerButton;

/// A cell of the containers column: the buttons of one pod's containers, in ascending order of their names.
/// Of a pod with very many only the first have buttons, and how many others there are is told behind them.
class TableButtonView : public QWidget
{
    Q_OBJECT
public:
    TableButtonView(const ObjectName &pod, const QStringList &containers, QWidget *parent);

    const ObjectName &pod() const { return m_pod; }
    /// The container list for which this cell was built, in kubectl's order.
    const QStringList &containers() const { return m_containers; }
    const QList<ContainerButton *> &buttons() const { return m_buttons; }
    bool hasCheckedButton() const;

    static constexpr qsizetype mostButtons = 100;
    /// What is told of the containers that have no button; empty when all have one.
    static QString othersText(qsizetype containers);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    const ObjectName m_pod;
    const QStringList m_containers;
    QList<ContainerButton *> m_buttons;
    QLabel *m_others = nullptr; ///< null when every container has a button
};

} // namespace tidewright
