// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AboutWindow.h"

#include "core/running/PackagedKubectl.h"
#include "platform/desktop/Bundle.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

namespace tidewright {

AboutWindow::AboutWindow(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(tr("About Tidewright"));
    setAttribute(Qt::WA_QuitOnClose, false); // the cluster windows keep the application open, this does not
    auto *name = new QLabel(QStringLiteral("Tidewright"));
    QFont font = name->font();
    font.setPointSizeF(font.pointSizeF() * 1.8);
    font.setBold(true);
    name->setFont(font);
    auto *version = new QLabel(
        QStringLiteral("Version %1 (Build %2)").arg(bundle::shortVersionString(), bundle::buildNumber()));
    version->setTextFormat(Qt::PlainText);
    version->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto *purpose = new QLabel(tr("A desktop client for Kubernetes clusters"));
    const auto packaged = PackagedKubectl::ofPackage();
    auto *kubectl = new QLabel(packaged
            ? tr("kubectl %1\nSHA-256 %2").arg(packaged->version, QString::fromLatin1(packaged->sha256))
            : tr("This package does not say which kubectl it came with."));
    kubectl->setTextFormat(Qt::PlainText);
    kubectl->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    QFont small = kubectl->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    kubectl->setFont(small);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 24, 32, 20);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    for (QLabel *label : {name, version, purpose, kubectl}) {
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label);
    }
    layout->addSpacing(12);
    layout->addWidget(buttons);
}

} // namespace tidewright
