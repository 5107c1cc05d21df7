// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/content/OtherKindsDialog.h"

#include "core/WindowState.h"
#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "resources/listing/LoadProblem.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTreeView>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr QSize listSize(760, 520);

QList<QStandardItem *> rowOf(const ServedKind &kind)
{
    QList<QStandardItem *> row;
    for (const QString &text :
        {kind.title(), kind.resource(), kind.namespaced ? QObject::tr("Namespace") : QObject::tr("Cluster"),
            kind.shortNames.join(QLatin1String(", "))}) {
        row.append(new QStandardItem(display_text::name(text)));
        row.last()->setEditable(false);
    }
    return row;
}

} // namespace

OtherKindsDialog::OtherKindsDialog(WindowState &window, QWidget *parent)
    : QDialog(parent)
    , m_rows(new QStandardItemModel(this))
    , m_matches(new QSortFilterProxyModel(this))
    , m_filter(new QLineEdit)
    , m_list(new QTreeView)
    , m_note(new QLabel)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Other Kinds"));
    build();
    resize(listSize.boundedTo(parent ? parent->size() : listSize));
    load(window);
}

OtherKindsDialog::~OtherKindsDialog()
{
    if (m_shell) {
        m_shell->cancel();
    }
}

void OtherKindsDialog::build()
{
    m_rows->setHorizontalHeaderLabels({tr("Kind"), tr("Resource"), tr("Scope"), tr("Short Names")});
    m_matches->setSourceModel(m_rows);
    m_matches->setFilterKeyColumn(-1); // all of them
    m_matches->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_matches->setSortCaseSensitivity(Qt::CaseInsensitive);
    m_filter->setPlaceholderText(tr("Search for a kind"));
    m_filter->setAccessibleName(m_filter->placeholderText());
    m_filter->setClearButtonEnabled(true);
    m_filter->installEventFilter(this);
    m_list->setModel(m_matches);
    m_list->setAccessibleName(tr("Kinds"));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_list->setSortingEnabled(true);
    m_list->sortByColumn(0, Qt::AscendingOrder);
    m_list->setColumnWidth(0, 210);
    m_list->setColumnWidth(1, 310);
    m_list->setColumnWidth(2, 90);
    m_note->setTextFormat(Qt::PlainText);
    m_note->setWordWrap(true);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel);
    m_open = buttons->button(QDialogButtonBox::Open);
    m_open->setEnabled(false);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_filter);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_note);
    layout->addWidget(buttons);
    m_filter->setFocus();
    connect(m_filter, &QLineEdit::textChanged, this, &OtherKindsDialog::narrow);
    connect(m_list, &QTreeView::activated, this, &OtherKindsDialog::choose);
    connect(buttons, &QDialogButtonBox::accepted, this, &OtherKindsDialog::choose);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
        [this](const QModelIndex &current) { m_open->setEnabled(current.isValid()); });
}

void OtherKindsDialog::load(WindowState &window)
{
    if (window.currentContext().isEmpty() || !window.loadingHint().isEmpty()) {
        const QString hint = window.loadingHint();
        m_note->setText(display_text::clean(hint.isEmpty() ? tr("No context is chosen.") : hint));
        return;
    }
    m_note->setText(tr("Asking the cluster which kinds it serves…"));
    m_shell = window.kubeCtl().makeShell();
    m_shell->runAsync(QStringList{QStringLiteral("kubectl")} + servedKindsArguments()
            + QStringList{contextArgument(window.currentContext())},
        true, window.console(),
        onMain(QPointer(this),
            [](OtherKindsDialog &dialog, const ShellResult &result) { dialog.loaded(result); }));
}

void OtherKindsDialog::loaded(const ShellResult &result)
{
    m_kinds = parseServedKinds(result.output);
    for (const ServedKind &kind : m_kinds) {
        m_rows->appendRow(rowOf(kind));
    }
    // A part of the cluster that does not answer leaves out its own kinds only.
    const QString failure = sentenceFirst(result.failure());
    m_note->setText(display_text::shortened(display_text::clean(failure), 400, 4));
    m_note->setToolTip(display_text::toolTip(failure));
    m_note->setVisible(!failure.isEmpty());
    narrow(m_filter->text());
}

void OtherKindsDialog::narrow(const QString &text)
{
    m_matches->setFilterFixedString(text.trimmed());
    m_list->setCurrentIndex(m_matches->index(0, 0));
    m_open->setEnabled(m_matches->rowCount() > 0);
}

void OtherKindsDialog::choose()
{
    const QModelIndex current = m_list->currentIndex();
    if (!current.isValid()) {
        return;
    }
    const ServedKind kind = m_kinds[static_cast<std::size_t>(m_matches->mapToSource(current).row())];
    accept();
    Q_EMIT chosen(kind);
}

bool OtherKindsDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        switch (static_cast<QKeyEvent *>(event)->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
            QCoreApplication::sendEvent(m_list, event);
            return true;
        default:
            break;
        }
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace tidewright
