// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TableNotThereYet.h"

#include <QLabel>
#include <QVBoxLayout>

namespace tidewright {

TableNotThereYet::TableNotThereYet(const QString &kindName, QWidget *parent)
    : QWidget(parent)
{
    auto *label = new QLabel(tr("The table of %1 is not in this version yet.").arg(kindName.toLower()));
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 24);
    layout->addWidget(label);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
}

} // namespace tidewright
