// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kubeconfig/KubeConfigChooser.h"

#include <QFileInfo>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSortFilterProxyModel>

namespace tidewright {

namespace {

constexpr QSize titleFieldSize(200, 24);
constexpr QSize usualSize(720, 440);

/// Hides the files that cannot be chosen. Wildcards cannot express "no extension".
class AllowedFiles : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override
    {
        const auto *files = qobject_cast<QFileSystemModel *>(sourceModel());
        const QModelIndex index = files->index(row, 0, parent);
        return files->isDir(index) || KubeConfigChooser::isAllowed(files->fileName(index));
    }
};

QString firstFolder()
{
    const QString usual = QDir::homePath() + QLatin1String("/.kube");
    return QFileInfo(usual).isDir() ? usual : QDir::homePath();
}

} // namespace

KubeConfigChooser::KubeConfigChooser(QWidget *parent, bool showTitleRow)
    : QFileDialog(parent, QStringLiteral("Choose a kubernetes config file"))
{
    setOption(QFileDialog::DontUseNativeDialog); // the desktops' own dialogs take no extra row
    setOption(QFileDialog::ReadOnly);
    setFileMode(QFileDialog::ExistingFile);
    setOption(QFileDialog::HideNameFilterDetails);
    setNameFilter(tr("No extension, .yml or .yaml (*)"));
    setProxyModel(new AllowedFiles(this));
    setFilter(QDir::AllDirs | QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    setSizeGripEnabled(true);
    setDirectory(firstFolder());
    resize(sizeHint().expandedTo(usualSize));
    if (showTitleRow) {
        addTitleRow();
    }
    addRefusalRow();
}

bool KubeConfigChooser::isAllowed(const QString &fileName)
{
    const auto dot = fileName.lastIndexOf(QLatin1Char('.'));
    const QString extension = dot > 0 ? fileName.mid(dot + 1).toLower() : QString();
    return extension.isEmpty() || extension == QLatin1String("yml") || extension == QLatin1String("yaml");
}

void KubeConfigChooser::addTitleRow()
{
    m_title = new QLineEdit;
    m_title->setFixedSize(titleFieldSize.expandedTo(QSize(0, m_title->sizeHint().height())));
    m_title->setObjectName(QStringLiteral("titleField"));
    m_title->setAccessibleName(tr("Titlebar Name"));
    auto *label = new QLabel(QStringLiteral("   Titlebar Name: "));
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setBuddy(m_title);
    if (auto *grid = qobject_cast<QGridLayout *>(layout())) {
        const int row = grid->rowCount();
        grid->addWidget(label, row, 0);
        grid->addWidget(m_title, row, 1, Qt::AlignLeft);
    }
}

void KubeConfigChooser::addRefusalRow()
{
    m_refusal = new QLabel(tr("Only files that end in .yml, .yaml or in no extension can be chosen."));
    m_refusal->hide();
    connect(this, &QFileDialog::currentChanged, m_refusal, &QWidget::hide);
    if (auto *grid = qobject_cast<QGridLayout *>(layout())) {
        grid->addWidget(m_refusal, grid->rowCount(), 1);
    }
}

KubeConfigChoice KubeConfigChooser::choice() const
{
    return {selectedFiles().value(0), m_title ? m_title->text() : QString()};
}

void KubeConfigChooser::accept()
{
    const QFileInfo file(selectedFiles().value(0));
    if (file.isFile() && !isAllowed(file.fileName())) {
        m_refusal->show();
        return;
    }
    QFileDialog::accept();
}

void chooseKubeConfig(QWidget *parent, bool showTitleRow, QObject *receiver, KubeConfigChosen chosen)
{
    auto *dialog = new KubeConfigChooser(parent, showTitleRow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    QObject::connect(dialog, &QDialog::finished, receiver, [dialog, chosen = std::move(chosen)](int result) {
        chosen(result == QDialog::Accepted ? std::optional(dialog->choice()) : std::nullopt);
    });
    dialog->show();
}

} // namespace tidewright
