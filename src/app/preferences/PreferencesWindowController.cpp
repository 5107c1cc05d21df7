// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/preferences/PreferencesWindowController.h"

#include "app/preferences/AdvancedPreferencesViewController.h"
#include "app/preferences/GeneralPreferencesViewController.h"

#include <QShortcut>
#include <QStackedWidget>
#include <QTabBar>
#include <QVBoxLayout>

namespace tidewright {

PreferencesWindowController::PreferencesWindowController(QWidget *parent)
    : QDialog(parent)
    , m_general(new GeneralPreferencesViewController)
    , m_advanced(new AdvancedPreferencesViewController)
    , m_tabs(new QTabBar)
    , m_panes(new QStackedWidget)
{
    setAttribute(Qt::WA_QuitOnClose, false); // the cluster windows decide when the program ends
    m_tabs->setExpanding(false);
    m_tabs->setAccessibleName(tr("Panes"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 6, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_tabs);
    layout->addWidget(m_panes, 1);
    addPane(m_general);
    addPane(m_advanced);
    connect(m_tabs, &QTabBar::currentChanged, this, &PreferencesWindowController::showPane);
    connect(new QShortcut(QKeySequence(tr("Ctrl+W")), this), &QShortcut::activated, this, &QWidget::close);
    showPane(0);
}

void PreferencesWindowController::addPane(PreferencesViewController *pane)
{
    m_panes->addWidget(pane);
    m_tabs->addTab(pane->title());
}

void PreferencesWindowController::showPane(int index)
{
    // The window takes the size of the pane that it shows, not of the largest.
    for (int other = 0; other < m_panes->count(); ++other) {
        const auto policy = other == index ? QSizePolicy::Preferred : QSizePolicy::Ignored;
        m_panes->widget(other)->setSizePolicy(policy, policy);
    }
    m_panes->setCurrentIndex(index);
    const auto *pane = qobject_cast<PreferencesViewController *>(m_panes->widget(index));
    layout()->activate();
    resize(pane->preferredContentSize()
        + QSize(0, layout()->contentsMargins().top() + m_tabs->sizeHint().height()));
}

void PreferencesWindowController::showWindow()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

} // namespace tidewright
