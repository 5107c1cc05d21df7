// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferences/AdvancedPreferencesViewController.h"

#include "app/kubeconfig/PathHint.h"
#include "core/running/ProgramFolders.h"
#include "platform/desktop/Diagnostics.h"
#include "platform/settings/UserDefaults.h"
#include "platform/text/DisplayText.h"

#include <QAction>
#include <QButtonGroup>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

namespace tidewright {

namespace {

const auto envVarsKey = QStringLiteral("customEnvVars");
constexpr QSize tableSize(500, 200);
constexpr int foldersShown = 3;
constexpr int nameWidth = 190;

/// Gives the fields in the table names of their own.
class FieldDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(
        QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QWidget *field = QStyledItemDelegate::createEditor(parent, option, index);
        const bool isName = index.column() == EnvVarTableModel::NameColumn;
        field->setObjectName(
            isName ? QStringLiteral("CustomEnvVarField") : QStringLiteral("CustomEnvValueField"));
        field->setAccessibleName(isName ? AdvancedPreferencesViewController::tr("Variable Name")
                                        : AdvancedPreferencesViewController::tr("Variable Value"));
        return field;
    }
};

/// What becomes of the folders in these lines. Looks at the disk.
QString foldersExplanation(const QString &lines)
{
    using Pane = AdvancedPreferencesViewController;
    for (const QString &line : lines.split(QRegularExpression(QStringLiteral("[:\\n]")))) {
        const QString folder = line.trimmed();
        if (folder.isEmpty()) {
            continue;
        }
        const QString path = program_folders::inPath(folder);
        if (path.isEmpty()) {
            return Pane::tr("Left out, because it begins with neither “/” nor “~”: %1").arg(folder);
        }
        if (!QFileInfo(path).isDir()) {
            return Pane::tr("There is no such folder now: %1").arg(folder);
        }
    }
    return Pane::tr(
        "Folders of programs with which kubectl signs in to clusters (such as aws or gcloud), one on "
        "each line. They are searched after those where every program is looked for: /bin, /usr/bin and "
        "/usr/local/bin.");
}

} // namespace

AdvancedPreferencesViewController::AdvancedPreferencesViewController(QWidget *parent)
    : PreferencesViewController(tr("Advanced"), parent)
    , m_model(new EnvVarTableModel(this))
    , m_envvarTableView(new QTableView)
    , m_envvarSegmentedControl(new QButtonGroup(this))
    , m_foldersField(new QPlainTextEdit)
{
    buildTable();
    buildFolders();
    buildLayout();
    connect(m_model, &EnvVarTableModel::edited, this, &AdvancedPreferencesViewController::save);
    connect(m_envvarSegmentedControl, &QButtonGroup::idClicked, this,
        &AdvancedPreferencesViewController::envvarSegmentedControlClicked);
    auto *deleteCommand = new QAction(tr("Delete"), m_envvarTableView);
    deleteCommand->setShortcut(QKeySequence::Delete);
    deleteCommand->setShortcutContext(Qt::WidgetShortcut);
    connect(deleteCommand, &QAction::triggered, this, &AdvancedPreferencesViewController::deleteRows);
    m_envvarTableView->addAction(deleteCommand);
}

void AdvancedPreferencesViewController::buildTable()
{
    QTableView *table = m_envvarTableView;
    table->setModel(m_model);
    table->setItemDelegate(new FieldDelegate(table));
    table->setAccessibleName(tr("Environment Variables"));
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
        | QAbstractItemView::AnyKeyPressed);
    table->setAlternatingRowColors(true);
    table->setShowGrid(false);
    table->setTabKeyNavigation(false);
    table->setWordWrap(false);
    table->setMinimumSize(tableSize);
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 10);
    table->horizontalHeader()->setHighlightSections(false);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setColumnWidth(EnvVarTableModel::NameColumn, nameWidth);
}

void AdvancedPreferencesViewController::buildLayout()
{
    auto *title = new QLabel(tr("Environment &variables:"));
    title->setBuddy(m_envvarTableView);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 16);
    layout->addWidget(title);
    layout->addWidget(m_envvarTableView, 1);
    layout->addWidget(makeSegments());
    layout->addWidget(
        makeHint(tr("Given to custom actions. Of several variables of one name, the last counts.")));
    layout->addSpacing(12);
    auto *folders = new QLabel(tr("&Helper programs:"));
    folders->setBuddy(m_foldersField);
    auto *browse = new QPushButton(tr("Add &Folder…"));
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, &AdvancedPreferencesViewController::browseForFolder);
    auto *row = new QHBoxLayout;
    row->addWidget(m_foldersField, 1);
    row->addWidget(browse, 0, Qt::AlignTop);
    layout->addWidget(folders);
    layout->addLayout(row);
    layout->addWidget(m_foldersHint);
}

void AdvancedPreferencesViewController::buildFolders()
{
    m_foldersField->setAccessibleName(tr("Folders of Helper Programs"));
    m_foldersField->setPlaceholderText(QStringLiteral("~/google-cloud-sdk/bin"));
    m_foldersField->setTabChangesFocus(true);
    m_foldersField->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_foldersField->setFixedHeight(m_foldersField->fontMetrics().lineSpacing() * foldersShown + 14);
    m_foldersHint = makeHint({}, 3);
    m_foldersExplained = new PathHint(m_foldersHint, foldersExplanation, this);
}

void AdvancedPreferencesViewController::browseForFolder()
{
    auto *dialog = new QFileDialog(this, tr("Folder of Helper Programs"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->setOption(QFileDialog::ReadOnly);
    connect(
        dialog, &QFileDialog::fileSelected, m_foldersField, [field = m_foldersField](const QString &folder) {
            const QString before = field->toPlainText().trimmed();
            field->setPlainText(before.isEmpty() ? folder : before + QLatin1Char('\n') + folder);
        });
    dialog->open();
}

void AdvancedPreferencesViewController::saveFolders()
{
    const QString lines = m_foldersField->toPlainText();
    program_folders::setAdded(lines.split(QLatin1Char('\n')));
    m_foldersExplained->explain(lines);
}

QWidget *AdvancedPreferencesViewController::makeSegments()
{
    auto *control = new QWidget;
    auto *row = new QHBoxLayout(control);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    const auto addSegment = [this, row](Segment segment, const QString &text, const QString &name) {
        auto *button = new QPushButton(text);
        button->setAutoDefault(false);
        button->setAccessibleName(name);
        button->setToolTip(display_text::toolTip(name));
        button->setFixedWidth(button->sizeHint().height() + 8);
        m_envvarSegmentedControl->addButton(button, segment);
        row->addWidget(button);
    };
    addSegment(AddSegment, QStringLiteral("+"), tr("Add Variable"));
    addSegment(DeleteSegment, QStringLiteral("−"), tr("Delete Variables"));
    row->addStretch();
    return control;
}

void AdvancedPreferencesViewController::viewDidLoad()
{
    QList<EnvVar> variables;
    const auto stored = userDefaults().dictionary(envVarsKey).value_or(UserDefaults::Dictionary());
    for (auto entry = stored.begin(); entry != stored.end(); ++entry) {
        variables.append({entry.key(), entry.value()}); // in the order of their names
    }
    m_model->setCustomEnvvars(variables);
    m_foldersField->setPlainText(program_folders::added().join(QLatin1Char('\n')));
    m_foldersExplained->explain(m_foldersField->toPlainText());
    connect(
        m_foldersField, &QPlainTextEdit::textChanged, this, &AdvancedPreferencesViewController::saveFolders);
}

void AdvancedPreferencesViewController::envvarSegmentedControlClicked(int segment)
{
    if (segment == AddSegment) {
        addVariable();
    } else if (segment == DeleteSegment) {
        deleteRows();
    }
}

void AdvancedPreferencesViewController::addVariable()
{
    const int count = m_model->rowCount();
    if (count > 0 && customEnvvars().last() == EnvVar()) {
        editName(count - 1);
        return;
    }
    m_model->appendEmpty();
    editName(count);
}

void AdvancedPreferencesViewController::editName(int row)
{
    const QModelIndex name = m_model->index(row, EnvVarTableModel::NameColumn);
    m_envvarTableView->setCurrentIndex(name);
    m_envvarTableView->edit(name);
}

void AdvancedPreferencesViewController::deleteRows()
{
    writeDiagnostic(QStringLiteral("delete"));
    QList<int> rows;
    for (const QModelIndex &index : m_envvarTableView->selectionModel()->selectedRows()) {
        rows.append(index.row());
    }
    m_model->removeRowsAt(rows);
    save();
}

void AdvancedPreferencesViewController::save()
{
    UserDefaults::Dictionary variables;
    for (const EnvVar &variable : customEnvvars()) {
        variables.insert(variable.key, variable.value);
    }
    userDefaults().set(envVarsKey, variables);
}

} // namespace tidewright
