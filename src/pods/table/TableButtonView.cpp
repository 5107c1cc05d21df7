// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/table/TableButtonView.h"

#include "pods/table/ContainerButton.h"

#include <QLabel>
#include <QLocale>

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
    for (const QString &container : ascending.first(qMin(mostButtons, ascending.size()))) {
        m_buttons.append(new ContainerButton(container, pod, this));
    }
    if (const QString others = othersText(containers.size()); !others.isEmpty()) {
        m_others = new QLabel(others, this);
        m_others->setTextFormat(Qt::PlainText);
        m_others->resize(m_others->sizeHint());
    }
}

QString TableButtonView::othersText(qsizetype containers)
{
    return containers <= mostButtons ? QString()
                                     : tr("and %1 more").arg(QLocale().toString(containers - mostButtons));
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
    if (m_others) {
        m_others->move(x, (height() - m_others->height()) / 2);
    }
}

} // namespace tidewright
