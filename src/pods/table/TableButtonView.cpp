// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/table/TableButtonView.h"

#include "pods/table/ContainerButton.h"

#include <algorithm>

namespace tidewright {

namespace {

constexpr int buttonSpacing = 5;

} // namespace

TableButtonView::TableButtonView(const ObjectName &pod, const QStringList &containers, QWidget *parent)
    : QWidget(parent)
    , m_pod(pod)
    , m_containers(containers)
{
    QStringList ascending = containers;
    ascending.sort();
    for (const QString &container : std::as_const(ascending)) {
        m_buttons.append(new ContainerButton(container, pod, this));
    }
}

bool TableButtonView::hasCheckedButton() const
{
    return std::any_of(
        m_buttons.cbegin(), m_buttons.cend(), [](const auto *button) { return button->isChecked(); });
}

void TableButtonView::resizeEvent(QResizeEvent *)
{
    int x = 0;
    for (ContainerButton *button : std::as_const(m_buttons)) {
        button->move(x, (height() - button->height()) / 2);
        x += button->width() + buttonSpacing;
    }
}

} // namespace tidewright
