// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferences/ContextPreferencesViewController.h"

#include "app/state/KubeSplitViewController.h"
#include "app/window/ClusterWindowFrame.h"
#include "app/window/MainWindowController.h"
#include "core/CommandGate.h"
#include "core/KubeCtl.h"
#include "platform/text/DisplayText.h"
#include "platform/text/NaturalOrder.h"
#include "resources/widgets/ContextBand.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableWidget>

#include <algorithm>
#include <tuple>

namespace tidewright {

namespace {

constexpr QSize contextsSize(560, 220);
constexpr int filesWidth = 170;
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
    QIcon icon(pixmap);
    icon.addPixmap(pixmap, QIcon::Selected); // not tinted like a symbol
    return icon;
}

std::vector<ContextKey> contextsOfWindows()
{
    std::vector<ContextKey> contexts;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        const auto *frame = qobject_cast<ClusterWindowFrame *>(widget);
        for (const MainWindowController *page : frame ? frame->pages() : QList<MainWindowController *>()) {
            const QString path = page->state().kubeConfigPath();
            for (const QString &name : page->state().contextList().entries) {
                contexts.emplace_back(path, name);
            }
        }
    }
    return contexts;
}

QString shownName(const ContextKey &context)
{
    return context == ContextKey::read(QStringLiteral("*"))
        ? ContextPreferencesViewController::tr("Every other context")
        : display_text::clean(context.name);
}

QString shownFiles(const ContextKey &context)
{
    if (context.files.isEmpty()) {
        return ContextPreferencesViewController::tr("Every kubeconfig");
    }
    QStringList files = context.files.split(QLatin1Char(':'));
    for (QString &file : files) {
        if (file.startsWith(QDir::homePath() + QLatin1Char('/'))) {
            file.replace(0, QDir::homePath().size(), QLatin1Char('~'));
        }
    }
    return display_text::clean(files.join(QLatin1String(", ")));
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
    m_table->setHorizontalHeaderLabels({tr("Context"), tr("Kubeconfig"), tr("Access"), tr("Colour")});
    m_table->setAccessibleName(tr("Contexts"));
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    m_table->setShowGrid(false);
    m_table->setTabKeyNavigation(false);
    m_table->setWordWrap(false);
    m_table->setTextElideMode(Qt::ElideMiddle);
    m_table->setMinimumSize(contextsSize);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 10);
    QHeaderView *header = m_table->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    m_table->setColumnWidth(FilesColumn, filesWidth);
    m_table->setColumnWidth(AccessColumn, accessWidth);
    m_table->setColumnWidth(ColourColumn, accessWidth);
}

void ContextPreferencesViewController::buildLayout()
{
    m_suggestion->setAutoDefault(false);
    auto *choices = new QHBoxLayout;
    choices->setSpacing(10);
    const auto addChoice = [choices](const QString &title, QComboBox *list) {
        auto *label = new QLabel(title);
        label->setTextFormat(Qt::PlainText);
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
    layout->addSpacing(4);
    layout->addLayout(choices);
    layout->addWidget(m_hint);
}

void ContextPreferencesViewController::connectParts()
{
    connect(
        m_table, &QTableWidget::itemSelectionChanged, this, &ContextPreferencesViewController::showChoice);
    connect(&ContextPolicies::shared(), &ContextPolicies::changed, this,
        &ContextPreferencesViewController::showPolicies);
    const auto chooseAccess = [this](int index) {
        change([index](const ContextKey &, const ContextPolicy &now) {
            return ContextPolicy{static_cast<ContextAccess>(index), now.colour};
        });
    };
    const auto chooseColour = [this](int index) {
        change([index](const ContextKey &, const ContextPolicy &now) {
            return ContextPolicy{now.access, contextColours().at(index)};
        });
    };
    // A typed letter changes the index without activating it; the same choice again changes nothing in a
    // list, but what cannot be read in the settings.
    connect(m_access, &QComboBox::activated, this, chooseAccess);
    connect(m_access, &QComboBox::currentIndexChanged, this, chooseAccess);
    connect(m_colour, &QComboBox::activated, this, chooseColour);
    connect(m_colour, &QComboBox::currentIndexChanged, this, chooseColour);
    connect(m_suggestion, &QPushButton::clicked, this, [this] {
        change(
            [](const ContextKey &context, const ContextPolicy &) { return suggestedPolicy(context.name); });
    });
    for (QComboBox *list : {m_access, m_colour}) {
        list->installEventFilter(this);
    }
}

void ContextPreferencesViewController::showEvent(QShowEvent *event)
{
    PreferencesViewController::showEvent(event);
    fill();
    KubeCtl kubeCtl;
    kubeCtl.configPath = MainWindowController::defaultKubeConfigPath();
    kubeCtl.readKubeConfig([self = QPointer(this), path = kubeCtl.configPath](
                               const std::optional<KubeConfigContents> &contents) {
        if (!self || !contents) {
            return;
        }
        self->m_defaults.clear();
        for (const QString &name : contents->contexts.keys()) {
            self->m_defaults.emplace_back(path, name);
        }
        self->fill();
    });
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
    std::vector<ContextKey> contexts = contextsOfWindows();
    contexts.insert(contexts.end(), m_defaults.begin(), m_defaults.end());
    const QList<ContextKey> chosen = ContextPolicies::chosen();
    contexts.insert(contexts.end(), chosen.begin(), chosen.end());
    const auto order = [](const ContextKey &context) {
        return std::tuple(naturalSortKey(context.name), context.name, context.files);
    };
    std::sort(contexts.begin(), contexts.end(),
        [order](const ContextKey &a, const ContextKey &b) { return order(a) < order(b); });
    contexts.erase(std::unique(contexts.begin(), contexts.end()), contexts.end());
    if (contexts != m_contexts) {
        const QList<ContextKey> selected = selectedContexts();
        m_contexts = contexts;
        makeRows(selected);
    }
    showPolicies();
}

void ContextPreferencesViewController::makeRows(const QList<ContextKey> &selected)
{
    const QSignalBlocker blocker(m_table);
    const ContextKey usual(MainWindowController::defaultKubeConfigPath(), {});
    bool isUsual = true;
    m_table->clearSelection();
    m_table->setRowCount(static_cast<int>(m_contexts.size()));
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const ContextKey &context = contextAt(row);
        isUsual = isUsual && context.files == usual.files;
        m_table->setItem(row, NameColumn, makeItem(shownName(context)));
        m_table->setItem(row, FilesColumn, makeItem(shownFiles(context)));
        m_table->item(row, FilesColumn)->setToolTip(display_text::toolTip(shownFiles(context)));
        m_table->setItem(row, AccessColumn, makeItem({}));
        m_table->setItem(row, ColourColumn, makeItem({}));
        const bool isSelected = selected.isEmpty() ? row == 0 : selected.contains(context);
        for (int column = 0; isSelected && column < ColumnCount; ++column) {
            m_table->item(row, column)->setSelected(true);
        }
    }
    m_table->setColumnHidden(FilesColumn, isUsual);
}

void ContextPreferencesViewController::showPolicies()
{
    for (int row = 0; row < m_table->rowCount(); ++row) {
        const ContextPolicy policy = ContextPolicies::policy(contextAt(row));
        m_table->item(row, AccessColumn)->setText(nameOf(policy.access));
        m_table->item(row, ColourColumn)->setText(nameOf(policy.colour));
        m_table->item(row, ColourColumn)->setIcon(swatch(policy.colour));
    }
    showChoice();
}

const ContextKey &ContextPreferencesViewController::contextAt(int row) const
{
    return m_contexts.at(static_cast<std::size_t>(row));
}

QList<ContextKey> ContextPreferencesViewController::selectedContexts() const
{
    QList<ContextKey> contexts;
    for (const QModelIndex &index : m_table->selectionModel()->selectedRows(NameColumn)) {
        contexts.append(contextAt(index.row()));
    }
    return contexts;
}

/// That of the first selected context stands for all.
void ContextPreferencesViewController::showChoice()
{
    const QList<ContextKey> contexts = selectedContexts();
    const ContextKey first = contexts.value(0);
    const ContextPolicy policy = contexts.isEmpty() ? ContextPolicy() : ContextPolicies::policy(first);
    const ContextPolicy suggested = suggestedPolicy(first.name);
    for (QComboBox *list : {m_access, m_colour}) {
        list->setEnabled(!contexts.isEmpty());
    }
    const QSignalBlocker accessBlocker(m_access);
    const QSignalBlocker colourBlocker(m_colour);
    m_access->setCurrentIndex(static_cast<int>(policy.access));
    m_colour->setCurrentIndex(static_cast<int>(contextColours().indexOf(policy.colour)));
    m_hint->setText(contexts.isEmpty() ? tr("Select a context to choose what may be done in it.")
            : policy.isReadable        ? explanation(policy.access)
                                       : readOnlyReason(first));
    m_suggestion->setText(
        tr("&Suggested: %1, %2").arg(nameOf(suggested.access), nameOf(suggested.colour).toLower()));
    m_suggestion->setToolTip(tr("What the name of the context speaks for"));
    m_suggestion->setVisible(contexts.size() == 1 && suggested != policy && suggested != ContextPolicy());
}

void ContextPreferencesViewController::change(
    const std::function<ContextPolicy(const ContextKey &context, const ContextPolicy &now)> &choice)
{
    for (const ContextKey &context : selectedContexts()) {
        ContextPolicies::shared().set(context, choice(context, ContextPolicies::policy(context)));
    }
}

} // namespace tidewright
