// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ContextPreferencesViewController.h"

#include "app/ClusterWindowFrame.h"
#include "app/KubeSplitViewController.h"
#include "app/MainWindowController.h"
#include "platform/NaturalOrder.h"
#include "resources/ContextBand.h"

#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableWidget>

#include <algorithm>

namespace tidewright {

namespace {

constexpr QSize tableSize(560, 220);
constexpr int nameWidth = 320;
constexpr int accessWidth = 110;
constexpr int swatchSize = 12;

/// A dot in the colour; an empty one for none.
QIcon swatch(ContextColour colour)
{
    QPixmap pixmap(QSize(swatchSize, swatchSize) * qApp->devicePixelRatio());
    pixmap.setDevicePixelRatio(qApp->devicePixelRatio());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QApplication::palette().color(QPalette::Mid));
    if (const QColor shade = shadeOf(colour); shade.isValid()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(shade);
    }
    painter.drawEllipse(QRectF(0.5, 0.5, swatchSize - 1, swatchSize - 1));
    return QIcon(pixmap);
}

QStringList contextsOfWindows()
{
    QStringList contexts;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (const auto *frame = qobject_cast<ClusterWindowFrame *>(widget)) {
            for (const MainWindowController *page : frame->pages()) {
                contexts += page->state().contextList().entries;
                contexts.append(page->state().currentContext());
            }
        }
    }
    return contexts;
}

QString explanation(ContextAccess access)
{
    using Pane = ContextPreferencesViewController;
    switch (access) {
    case ContextAccess::Free:
        return Pane::tr("Free: changes are made as they are asked for.");
    case ContextAccess::Protected:
        return Pane::tr("Protected: each change asks for the context's name to be typed.");
    case ContextAccess::ReadOnly:
        return Pane::tr("Read-only: commands that change objects are disabled. Typed commands and actions "
                        "run only when they are known to read.");
    }
    return {};
}

QTableWidgetItem *makeItem(const QString &text)
{
    auto *item = new QTableWidgetItem(text);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    return item;
}

QComboBox *makeList(const QString &name)
{
    auto *list = new QComboBox;
    list->setAccessibleName(name);
    list->setMinimumWidth(accessWidth + swatchSize);
    return list;
}

} // namespace

ContextPreferencesViewController::ContextPreferencesViewController(QWidget *parent)
    : PreferencesViewController(tr("Contexts"), parent)
    , m_table(new QTableWidget(0, ColumnCount))
    , m_access(makeList(tr("Access")))
    , m_colour(makeList(tr("Colour")))
    , m_hint(makeHint({}, 2))
    , m_suggestion(new QPushButton)
    , m_other(new QLineEdit)
{
    for (const auto access : {ContextAccess::Free, ContextAccess::Protected, ContextAccess::ReadOnly}) {
        m_access->addItem(nameOf(access));
    }
    for (const ContextColour colour : contextColours()) {
        m_colour->addItem(swatch(colour), nameOf(colour));
    }
    buildTable();
    buildLayout();
    connectParts();
    showChoice();
}

void ContextPreferencesViewController::buildTable()
{
    m_table->setHorizontalHeaderLabels({tr("Context"), tr("Access"), tr("Colour")});
    m_table->setAccessibleName(tr("Contexts"));
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    m_table->setShowGrid(false);
    m_table->setTabKeyNavigation(false);
    m_table->setWordWrap(false);
    m_table->setTextElideMode(Qt::ElideMiddle);
    m_table->setMinimumSize(tableSize);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 10);
    QHeaderView *header = m_table->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setStretchLastSection(true);
    m_table->setColumnWidth(NameColumn, nameWidth);
    m_table->setColumnWidth(AccessColumn, accessWidth);
}

void ContextPreferencesViewController::buildLayout()
{
    m_other->setPlaceholderText(tr("Name of another context"));
    m_other->setAccessibleName(tr("Another Context"));
    auto *add = new QPushButton(tr("A&dd"));
    add->setAutoDefault(false);
    connect(add, &QPushButton::clicked, this, &ContextPreferencesViewController::addOther);
    auto *other = new QHBoxLayout;
    other->addWidget(m_other, 1);
    other->addWidget(add);
    m_suggestion->setAutoDefault(false);
    auto *choices = new QHBoxLayout;
    choices->setSpacing(10);
    const auto addChoice = [choices](const QString &title, QComboBox *list) {
        auto *label = new QLabel(title);
        label->setBuddy(list);
        choices->addWidget(label);
        choices->addWidget(list);
        choices->addSpacing(12);
    };
    addChoice(tr("&Access:"), m_access);
    addChoice(tr("&Colour:"), m_colour);
    choices->addStretch();
    choices->addWidget(m_suggestion);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 20, 24, 12);
    layout->setSpacing(12);
    layout->addWidget(m_table, 1);
    layout->addLayout(other);
    layout->addSpacing(4);
    layout->addLayout(choices);
    layout->addWidget(m_hint);
}

void ContextPreferencesViewController::connectParts()
{
    connect(
        m_table, &QTableWidget::itemSelectionChanged, this, &ContextPreferencesViewController::showChoice);
    connect(m_other, &QLineEdit::returnPressed, this, &ContextPreferencesViewController::addOther);
    connect(&ContextPolicies::shared(), &ContextPolicies::changed, this,
        &ContextPreferencesViewController::showPolicies);
    connect(m_access, &QComboBox::activated, this, [this](int index) {
        change([index](const QString &, ContextPolicy now) {
            return ContextPolicy{static_cast<ContextAccess>(index), now.colour};
        });
    });
    connect(m_colour, &QComboBox::activated, this, [this](int index) {
        change([index](const QString &, ContextPolicy now) {
            return ContextPolicy{now.access, contextColours().at(index)};
        });
    });
    connect(m_suggestion, &QPushButton::clicked, this,
        [this] { change([](const QString &context, ContextPolicy) { return suggestedPolicy(context); }); });
    for (QComboBox *list : {m_access, m_colour}) {
        list->installEventFilter(this);
    }
}

void ContextPreferencesViewController::showEvent(QShowEvent *event)
{
    PreferencesViewController::showEvent(event);
    fill();
    if (m_table->rowCount() > 0 && selectedContexts().isEmpty()) {
        m_table->selectRow(0);
    }
}

void ContextPreferencesViewController::changeEvent(QEvent *event)
{
    PreferencesViewController::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        for (int index = 0; index < m_colour->count(); ++index) {
            m_colour->setItemIcon(index, swatch(contextColours().at(index)));
        }
        showPolicies();
    }
}

bool ContextPreferencesViewController::eventFilter(QObject *watched, QEvent *event)
{
    // A choice applies at once: a wheel that only passes over a list must not make one.
    return event->type() == QEvent::Wheel || PreferencesViewController::eventFilter(watched, event);
}

void ContextPreferencesViewController::fill()
{
    QStringList contexts = contextsOfWindows() + ContextPolicies::chosenContexts() + m_added;
    contexts.removeAll(QString());
    contexts.removeDuplicates();
    std::sort(contexts.begin(), contexts.end(),
        [](const QString &a, const QString &b) { return naturalSortKey(a) < naturalSortKey(b); });
    const QStringList selected = selectedContexts();
    {
        const QSignalBlocker blocker(m_table);
        m_table->clearSelection();
        m_table->setRowCount(static_cast<int>(contexts.size()));
        for (int row = 0; row < m_table->rowCount(); ++row) {
            const QString &context = contexts.at(row);
            m_table->setItem(row, NameColumn, makeItem(context));
            m_table->setItem(row, AccessColumn, makeItem({}));
            m_table->setItem(row, ColourColumn, makeItem({}));
            for (int column = 0; selected.contains(context) && column < ColumnCount; ++column) {
                m_table->item(row, column)->setSelected(true);
            }
        }
    }
    showPolicies();
}

void ContextPreferencesViewController::showPolicies()
{
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const ContextPolicy policy = ContextPolicies::policy(m_table->item(row, NameColumn)->text());
        m_table->item(row, AccessColumn)->setText(nameOf(policy.access));
        m_table->item(row, ColourColumn)->setText(nameOf(policy.colour));
        m_table->item(row, ColourColumn)->setIcon(swatch(policy.colour));
    }
    showChoice();
}

QStringList ContextPreferencesViewController::selectedContexts() const
{
    QStringList contexts;
    for (const QModelIndex &index : m_table->selectionModel()->selectedRows(NameColumn)) {
        contexts.append(index.data().toString());
    }
    return contexts;
}

/// That of the first selected context stands for all.
void ContextPreferencesViewController::showChoice()
{
    const QStringList contexts = selectedContexts();
    const ContextPolicy policy = ContextPolicies::policy(contexts.value(0));
    const ContextPolicy suggested = suggestedPolicy(contexts.value(0));
    for (QComboBox *list : {m_access, m_colour}) {
        list->setEnabled(!contexts.isEmpty());
    }
    m_access->setCurrentIndex(static_cast<int>(policy.access));
    m_colour->setCurrentIndex(static_cast<int>(contextColours().indexOf(policy.colour)));
    m_hint->setText(contexts.isEmpty() ? tr("Select a context to choose what may be done in it.")
                                       : explanation(policy.access));
    m_suggestion->setText(
        tr("&Suggested: %1, %2").arg(nameOf(suggested.access), nameOf(suggested.colour).toLower()));
    m_suggestion->setToolTip(tr("What the name of the context speaks for"));
    m_suggestion->setVisible(contexts.size() == 1 && suggested != policy && suggested != ContextPolicy());
}

void ContextPreferencesViewController::addOther()
{
    const QString name = m_other->text().trimmed();
    if (name.isEmpty()) {
        m_other->setFocus();
        return;
    }
    m_other->clear();
    m_added.append(name);
    m_table->clearSelection();
    fill();
    for (int row = 0; row < m_table->rowCount(); ++row) {
        if (m_table->item(row, NameColumn)->text() == name) {
            m_table->selectRow(row);
            m_table->scrollToItem(m_table->item(row, NameColumn));
        }
    }
    m_access->setFocus();
}

void ContextPreferencesViewController::change(
    const std::function<ContextPolicy(const QString &context, ContextPolicy now)> &choice)
{
    for (const QString &context : selectedContexts()) {
        ContextPolicies::shared().set(context, choice(context, ContextPolicies::policy(context)));
    }
}

} // namespace tidewright
