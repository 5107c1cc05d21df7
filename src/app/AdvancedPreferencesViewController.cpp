// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AdvancedPreferencesViewController.h"

#include "platform/Diagnostics.h"
#include "platform/DisplayText.h"
#include "platform/UserDefaults.h"

#include <QAction>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

namespace tidewright {

namespace {

const auto envVarsKey = QStringLiteral("customEnvVars");
constexpr QSize tableSize(500, 220);
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

} // namespace

AdvancedPreferencesViewController::AdvancedPreferencesViewController(QWidget *parent)
    : PreferencesViewController(tr("Advanced"), parent)
    , m_model(new EnvVarTableModel(this))
    , m_envvarTableView(new QTableView)
    , m_envvarSegmentedControl(new QButtonGroup(this))
{
    buildTable();
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
