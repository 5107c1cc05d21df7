// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferences/GeneralPreferencesViewController.h"

#include "app/kubeconfig/KubeConfigChooser.h"
#include "app/kubeconfig/PathHint.h"
#include "app/kubeconfig/UserKubeConfig.h"
#include "app/state/LiveUpdates.h"
#include "external/InstalledApplications.h"
#include "external/Terminal.h"
#include "platform/process/Environment.h"
#include "platform/settings/UserDefaults.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tidewright {

namespace {

const auto terminalKey = QStringLiteral("preferredTerminal");
const auto editorKey = QStringLiteral("preferredEditor");
const auto kubeConfigKey = QStringLiteral("defaultKubeConfigPath");
const auto fixedEditor = QStringLiteral("Not Set");
constexpr int listWidth = 220;
constexpr int fieldWidth = 330;

QComboBox *makeList(const QString &entry, const QString &accessibleName)
{
    auto *list = new QComboBox;
    list->addItem(entry);
    list->setMinimumWidth(listWidth);
    list->setAccessibleName(accessibleName);
    return list;
}

void selectTitle(QComboBox &list, const QString &title)
{
    int index = list.findText(title, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 0) {
        list.addItem(GeneralPreferencesViewController::tr("%1 (not found)").arg(title), title);
        index = list.count() - 1;
    }
    list.setCurrentIndex(index);
}

/// The title as it is stored, which is not always the one shown.
QString selectedTitle(const QComboBox &list)
{
    return list.currentData().isValid() ? list.currentData().toString() : list.currentText();
}

void storeSelectedTitle(const QComboBox &list, const QString &key)
{
    if (list.currentIndex() < 0) {
        userDefaults().remove(key);
    } else {
        userDefaults().set(key, selectedTitle(list));
    }
}

/// What new windows will make of a path. Looks at the disk.
QString kubeConfigExplanation(const QString &path)
{
    using Pane = GeneralPreferencesViewController;
    if (path.isEmpty()) {
        return Pane::tr("Empty: kubectl's own default applies, which is the KUBECONFIG variable or else "
                        "~/.kube/config.");
    }
    const QFileInfo file(withTildeExpanded(path));
    if (!file.exists()) {
        return Pane::tr("There is no such file now. The path is kept as it is.");
    }
    if (file.isDir()) {
        return Pane::tr("This is a folder, not a file. The path is kept as it is.");
    }
    return file.isReadable() ? Pane::tr("Used by windows and tabs opened from now on.")
                             : Pane::tr("This file cannot be read. The path is kept as it is.");
}

QString followsExplanation(UserKubeConfig::Follows follows)
{
    using Pane = GeneralPreferencesViewController;
    switch (follows) {
    case UserKubeConfig::Follows::WindowInFront:
        return Pane::tr(
            "Other programs, such as kubectl in a terminal, turn to the context and namespace of the "
            "window in front, each time another window comes there.");
    case UserKubeConfig::Follows::Choice:
        return Pane::tr(
            "Choosing a context or a namespace in a window also chooses it for other programs, such as "
            "kubectl in a terminal.");
    case UserKubeConfig::Follows::Nothing:
        return Pane::tr(
            "Windows leave the kubeconfig as it is. Other programs, such as kubectl in a terminal, stay "
            "where they are.");
    }
    return {};
}

} // namespace

GeneralPreferencesViewController::GeneralPreferencesViewController(QWidget *parent)
    : PreferencesViewController(tr("General"), parent)
    , m_preferredTerminalPopup(makeList(terminalTitle, tr("Preferred Terminal")))
    , m_preferredEditorPopup(makeList(fixedEditor, tr("Preferred Editor")))
    , m_defaultKubeConfigField(new QLineEdit)
    , m_kubeConfigFollowsPopup(new QComboBox)
    , m_followsHint(makeHint({}, 2))
    , m_liveUpdates(new QCheckBox(tr("Show every change as it &happens")))
{
    QLabel *hint = makeHint({}, 2);
    m_kubeConfigHint = new PathHint(hint, kubeConfigExplanation, hint);

    buildLayout(hint);
    connectParts();
}

void GeneralPreferencesViewController::buildLayout(QLabel *kubeConfigHint)
{
    using Follows = UserKubeConfig::Follows;
    m_kubeConfigFollowsPopup->setAccessibleName(tr("My kubeconfig follows"));
    m_kubeConfigFollowsPopup->setMinimumWidth(listWidth);
    m_kubeConfigFollowsPopup->addItem(
        tr("The window I work in"), QVariant::fromValue(Follows::WindowInFront));
    m_kubeConfigFollowsPopup->addItem(tr("What I choose"), QVariant::fromValue(Follows::Choice));
    m_kubeConfigFollowsPopup->addItem(tr("Nothing"), QVariant::fromValue(Follows::Nothing));
    m_defaultKubeConfigField->setMinimumWidth(fieldWidth);
    m_defaultKubeConfigField->setClearButtonEnabled(true);
    m_defaultKubeConfigField->setAccessibleName(tr("Default Kubeconfig"));
    auto *browse = new QPushButton(tr("&Browse…"));
    browse->setAutoDefault(false); // Return belongs to the field
    browse->setAccessibleName(tr("Browse for Kubeconfig"));
    connect(browse, &QPushButton::clicked, this, &GeneralPreferencesViewController::browseKubeConfigClicked);
    auto *path = new QHBoxLayout;
    path->addWidget(m_defaultKubeConfigField, 1);
    path->addWidget(browse);
    auto *kubeConfigLabel = new QLabel(tr("Default &kubeconfig:"));
    kubeConfigLabel->setBuddy(m_defaultKubeConfigField);
    auto *layout = new QFormLayout(this);
    layout->setContentsMargins(24, 20, 24, 12);
    layout->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    layout->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    layout->setHorizontalSpacing(10);
    layout->setVerticalSpacing(10);
    layout->addRow(tr("&Terminal:"), m_preferredTerminalPopup);
    layout->addRow(tr("&Editor:"), m_preferredEditorPopup);
    layout->addRow(kubeConfigLabel, path);
    layout->addRow(QString(), kubeConfigHint);
    layout->addRow(tr("&My kubeconfig follows:"), m_kubeConfigFollowsPopup);
    layout->addRow(QString(), m_followsHint);
    layout->addRow(tr("Live updates:"), m_liveUpdates);
    layout->addRow(QString(),
        makeHint(
            tr("Off, the shown table is listed again every 30 seconds, as in the console after Reload."), 2));
}

void GeneralPreferencesViewController::connectParts()
{
    connect(m_preferredTerminalPopup, &QComboBox::activated, this,
        &GeneralPreferencesViewController::defaultTerminalAppSelected);
    connect(m_preferredEditorPopup, &QComboBox::activated, this,
        &GeneralPreferencesViewController::setPreferredEditor);
    connect(m_defaultKubeConfigField, &QLineEdit::returnPressed, this,
        &GeneralPreferencesViewController::defaultKubeConfigChanged);
    connect(m_kubeConfigFollowsPopup, &QComboBox::activated, this,
        &GeneralPreferencesViewController::kubeConfigFollowsChosen);
    connect(m_liveUpdates, &QCheckBox::clicked, &LiveUpdates::shared(), &LiveUpdates::setOn);
    connect(&LiveUpdates::shared(), &LiveUpdates::changed, m_liveUpdates,
        [this] { m_liveUpdates->setChecked(LiveUpdates::shared().isOn()); });
    for (QComboBox *list : {m_preferredTerminalPopup, m_preferredEditorPopup, m_kubeConfigFollowsPopup}) {
        list->installEventFilter(this);
    }
}

void GeneralPreferencesViewController::viewDidLoad()
{
    scanInstalledApplications(*m_preferredTerminalPopup, *m_preferredEditorPopup);
    selectCurrentChoices();
    m_defaultKubeConfigField->setText(userDefaults().string(kubeConfigKey).value_or(QString()));
    connect(m_defaultKubeConfigField, &QLineEdit::textChanged, this,
        &GeneralPreferencesViewController::controlTextDidChange);
    m_kubeConfigHint->explain(m_defaultKubeConfigField->text());
}

void GeneralPreferencesViewController::selectCurrentChoices()
{
    selectTitle(*m_preferredTerminalPopup, resolvePreferredTerminal());
    selectTitle(*m_preferredEditorPopup, userDefaults().string(editorKey).value_or(fixedEditor));
    const auto follows = UserKubeConfig::preference();
    m_kubeConfigFollowsPopup->setCurrentIndex(
        m_kubeConfigFollowsPopup->findData(QVariant::fromValue(follows)));
    m_followsHint->setText(followsExplanation(follows));
    m_liveUpdates->setChecked(LiveUpdates::shared().isOn());
}

bool GeneralPreferencesViewController::eventFilter(QObject *watched, QEvent *event)
{
    // A choice is stored at once: a wheel that only passes over a list must not make one.
    return event->type() == QEvent::Wheel || PreferencesViewController::eventFilter(watched, event);
}

void GeneralPreferencesViewController::defaultTerminalAppSelected()
{
    storeSelectedTitle(*m_preferredTerminalPopup, terminalKey);
}

void GeneralPreferencesViewController::setPreferredEditor()
{
    storeSelectedTitle(*m_preferredEditorPopup, editorKey);
}

void GeneralPreferencesViewController::defaultKubeConfigChanged()
{
    userDefaults().set(kubeConfigKey, m_defaultKubeConfigField->text());
}

void GeneralPreferencesViewController::controlTextDidChange()
{
    defaultKubeConfigChanged();
    m_kubeConfigHint->explain(m_defaultKubeConfigField->text());
}

void GeneralPreferencesViewController::browseKubeConfigClicked()
{
    chooseKubeConfig(this, false, this, [this](const std::optional<KubeConfigChoice> &choice) {
        if (choice) {
            m_defaultKubeConfigField->setText(choice->path);
            defaultKubeConfigChanged(); // also when the field had that text already
        }
    });
}

void GeneralPreferencesViewController::kubeConfigFollowsChosen()
{
    const auto follows = m_kubeConfigFollowsPopup->currentData().value<UserKubeConfig::Follows>();
    if (follows != UserKubeConfig::preference()) {
        UserKubeConfig::setPreference(follows);
    }
    m_followsHint->setText(followsExplanation(follows));
}

} // namespace tidewright
