// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/logs/view/CombinedLogsWindowController.h"

#include "platform/text/DisplayText.h"
#include "pods/logs/text/LogLineText.h"
#include "pods/logs/text/LogSearch.h"
#include "pods/logs/view/CombinedLogsViewController.h"
#include "pods/logs/view/LogPatternBar.h"
#include "pods/logs/view/LogSaver.h"
#include "pods/logs/view/LogStatusLine.h"
#include "pods/logs/view/LogTimeJump.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QComboBox>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace tidewright {

namespace {

constexpr QSize usualSize(1000, 640);
constexpr QSize smallestSize(420, 240);

QString tooComplicated(qint64 lines)
{
    return CombinedLogsWindowController::tr("too complicated for %1 lines").arg(countedText(lines));
}

} // namespace

CombinedLogsWindowController::CombinedLogsWindowController()
    : m_content(new CombinedLogsViewController)
    , m_search(new LogSearch(m_content->document(), this))
    , m_findBar(new LogPatternBar(tr("Find"), tr("Text in the log"), true))
    , m_filterBar(new LogPatternBar(tr("Filter"), tr("Show only lines with…"), false))
    , m_excludes(m_filterBar->addSwitch(QStringLiteral("≠"), tr("Leave matching lines out")))
    , m_around(new QComboBox)
    , m_status(new LogStatusLine(*m_content))
    , m_saver(std::make_unique<LogSaver>(*m_status, *this))
    , m_timeJump(std::make_unique<LogTimeJump>(m_content->document(), *m_content->logTextView()))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setMinimumSize(smallestSize);
    resize(usualSize.boundedTo(QGuiApplication::primaryScreen()->availableSize() * 0.9));
    buildToolBar();
    buildLayout();
    connectParts();
    m_content->logTextView()->setFocus();
    updateStatus();
}

CombinedLogsWindowController::~CombinedLogsWindowController()
{
    // What refers to the content goes first.
    delete m_search;
    m_timeJump.reset();
    m_saver.reset();
    delete m_status;
    m_content->windowWillClose();
}

QAction *CombinedLogsWindowController::addCommand(
    const QString &text, const QString &tip, const QKeySequence &shortcut, std::function<void()> chosen)
{
    auto *action = new QAction(text, this);
    action->setShortcut(shortcut);
    action->setToolTip(display_text::toolTip(shortcut.isEmpty()
            ? tip
            : QStringLiteral("%1 (%2)").arg(tip, shortcut.toString(QKeySequence::NativeText))));
    addAction(action);
    connect(action, &QAction::triggered, this, std::move(chosen));
    return action;
}

QAction *CombinedLogsWindowController::addSwitch(const QString &text, const QString &tip,
    const QKeySequence &shortcut, std::function<void(bool on)> switched)
{
    QAction *action = addCommand(text, tip, shortcut, [] {});
    action->setCheckable(true);
    connect(action, &QAction::triggered, this, std::move(switched));
    return action;
}

void CombinedLogsWindowController::buildToolBar()
{
    LogView *view = m_content->logTextView();
    auto *bar = addToolBar(tr("Commands"));
    bar->setMovable(false);
    bar->setContextMenuPolicy(Qt::PreventContextMenu);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    QAction *find
        = addCommand(tr("Find"), tr("Find in the log"), QKeySequence::Find, [this] { m_findBar->open(); });
    QAction *filter = addCommand(tr("Filter"), tr("Show only matching lines"),
        QKeySequence(tr("Ctrl+Shift+F")), [this] { m_filterBar->open(); });
    m_wrap = addSwitch(tr("Wrap"), tr("Wrap long lines"), QKeySequence(tr("Alt+Z")),
        [view](bool on) { view->scroll().setWrapping(on); });
    m_wrap->setChecked(view->scroll().isWrapping());
    m_names = addSwitch(tr("Names"), tr("Show the name of its container in front of each line"),
        QKeySequence(tr("Alt+N")), [this, view](bool on) {
            m_namesChosen = true;
            view->showSourceNames(on);
        });
    QAction *smaller
        = addCommand(tr("A−"), tr("Smaller text"), QKeySequence::ZoomOut, [view] { view->zoom(-1); });
    QAction *larger
        = addCommand(tr("A+"), tr("Larger text"), QKeySequence::ZoomIn, [view] { view->zoom(1); });
    m_save = addCommand(
        tr("Save…"), tr("Save the whole log to a file"), QKeySequence::Save, [this] { chooseFile(false); });
    QAction *clearAction = addCommand(tr("Clear"), tr("Let all text that has arrived go"),
        QKeySequence(tr("Ctrl+Shift+K")), [this] { clear(); });
    bar->addActions({find, filter});
    bar->addSeparator();
    addBeginning(*bar);
    bar->addSeparator();
    bar->addActions({m_names, m_wrap, smaller, larger});
    bar->addSeparator();
    bar->addActions({m_save, clearAction});
    buildContextMenu({find, filter, m_timestamps, m_names, m_wrap, m_save, clearAction});
}

/// Where the logs begin, and whether their lines have times.
void CombinedLogsWindowController::addBeginning(QToolBar &bar)
{
    using From = LogOptions::From;
    auto *button = new QToolButton;
    auto *menu = new QMenu(button);
    auto *group = new QActionGroup(menu);
    for (const auto &[from, title] :
        std::initializer_list<std::pair<From, QString>>{{From::Last50, tr("Last 50 Lines")},
            {From::Last500, tr("Last 500 Lines")}, {From::Last5000, tr("Last 5,000 Lines")},
            {From::All, tr("All")}, {From::FiveMinutes, tr("Last 5 Minutes")},
            {From::OneHour, tr("Last Hour")}, {From::Today, tr("Today")}}) {
        QAction *action = menu->addAction(title, this, [this, button, from, title] {
            button->setText(tr("From: %1").arg(title));
            m_content->options.from = from;
            m_content->restart();
        });
        action->setCheckable(true);
        group->addAction(action);
        connect(
            m_content, &CombinedLogsViewController::placeKnown, action, [this, action, button, from, title] {
                if (m_content->options.from == from) {
                    action->setChecked(true);
                    button->setText(tr("From: %1").arg(title));
                }
            });
    }
    button->setMenu(menu);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setText(tr("From: Last 50 Lines"));
    button->setAccessibleName(tr("From"));
    button->setToolTip(tr("Where the logs begin; another choice reads them anew"));
    bar.addWidget(button);
    m_goToTime = addCommand(tr("Go to Time…"), tr("Go to the first line of a time"),
        QKeySequence(tr("Ctrl+L")), [this] { m_timeJump->ask(); });
    m_goToTime->setEnabled(false);
    m_timestamps = addSwitch(tr("Times"), tr("Read the logs anew, with the time of each line"),
        QKeySequence(tr("Alt+T")), [this](bool on) {
            m_goToTime->setEnabled(on);
            m_content->options.timestamps = on;
            m_content->restart();
        });
    bar.addActions({m_timestamps, m_goToTime});
}

void CombinedLogsWindowController::buildContextMenu(const QList<QAction *> &shared)
{
    LogView *view = m_content->logTextView();
    addCommand(tr("Close"), tr("Close the window"), QKeySequence(tr("Ctrl+W")), [this] { close(); });
    addCommand(tr("Find Next"), {}, QKeySequence::FindNext, [this] { m_search->goOn(true); });
    addCommand(tr("Find Previous"), {}, QKeySequence::FindPrevious, [this] { m_search->goOn(false); });
    QAction *usual = addCommand(
        tr("Usual Text Size"), tr("Usual text size"), QKeySequence(tr("Ctrl+0")), [view] { view->zoom(0); });
    QAction *copy = addCommand(tr("Copy"), {}, {}, [view] { view->selection().copy(); });
    QAction *all = addCommand(tr("Select All"), {}, {}, [view] { view->selection().selectAll(); });
    QAction *selectedText = addCommand(tr("Find Selected Text"), tr("Find the selected text"),
        QKeySequence(tr("Ctrl+E")), [this] { findSelected(); });
    m_saveShown = addCommand(tr("Save Shown Lines…"), tr("Save what is shown to a file"),
        QKeySequence(tr("Ctrl+Shift+S")), [this] { chooseFile(true); });
    for (QAction *action : {copy, selectedText}) {
        connect(&view->selection(), &LogSelection::changed, action,
            [view, action] { action->setEnabled(!view->selection().isEmpty()); });
        action->setEnabled(false);
    }
    auto *line = new QAction(this);
    line->setSeparator(true);
    view->addActions({copy, all, selectedText, line});
    view->addActions(shared);
    view->addActions({usual, m_goToTime, m_saveShown});
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void CombinedLogsWindowController::buildLayout()
{
    for (const int lines : {0, 3, 10}) {
        m_around->addItem(lines == 0 ? tr("no lines around") : tr("%1 lines around").arg(lines), lines);
    }
    m_around->setAccessibleName(tr("Lines around"));
    m_around->setToolTip(tr("How many lines before and behind a matching one are shown"));
    m_filterBar->addChoice(m_around);
    auto *central = new QWidget;
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_content, 1);
    layout->addWidget(m_filterBar);
    layout->addWidget(m_findBar);
    layout->addWidget(m_status);
    setCentralWidget(central);
}

void CombinedLogsWindowController::connectParts()
{
    LogView *view = m_content->logTextView();
    LogDocument *document = &m_content->document();
    connect(m_findBar, &LogPatternBar::patternChanged, this, &CombinedLogsWindowController::find);
    connect(m_findBar, &LogPatternBar::stepped, m_search, &LogSearch::goOn);
    connect(m_filterBar, &LogPatternBar::patternChanged, this, &CombinedLogsWindowController::filter);
    connect(m_around, &QComboBox::currentIndexChanged, m_filterBar, &LogPatternBar::changed);
    for (LogPatternBar *bar : {m_findBar, m_filterBar}) {
        connect(bar, &LogPatternBar::closed, view, [view] { view->setFocus(); });
    }
    connect(m_search, &LogSearch::changed, this, &CombinedLogsWindowController::updateFindResult);
    connect(m_search, &LogSearch::currentMoved, &view->scroll(), &LogScroll::reveal);
    connect(document, &LogDocument::appended, this, &CombinedLogsWindowController::updateStatus);
    connect(document, &LogDocument::replaced, this, &CombinedLogsWindowController::updateStatus);
    connect(m_content, &CombinedLogsViewController::sourcesChanged, this,
        &CombinedLogsWindowController::updateStatus);
    connect(m_timeJump.get(), &LogTimeJump::noticed, m_status, &LogStatusLine::setNotice);
    connect(m_saver.get(), &LogSaver::busyChanged, this, &CombinedLogsWindowController::updateStatus);
}

void CombinedLogsWindowController::filter(const LogPattern &pattern)
{
    m_around->setEnabled(!m_excludes->isChecked());
    m_content->document().setFilter({pattern, m_excludes->isChecked(), m_around->currentData().toInt()});
}

void CombinedLogsWindowController::findSelected()
{
    constexpr qsizetype longest = 200;
    LogView *view = m_content->logTextView();
    const LogDocument &document = m_content->document();
    const std::vector<LogRange> ranges = view->selection().shownRanges();
    if (!ranges.empty() && totalLength(ranges) < LogScan::usualSpan) {
        const QString text = plainText(document.bytes().read(ranges)).section(u'\n', 0, 0);
        m_findBar->open(text.left(longest)); // a line at most: that is what a pattern is looked for in
    }
}

void CombinedLogsWindowController::find(const LogPattern &pattern)
{
    m_search->setPattern(pattern, m_content->logTextView()->scroll().topPosition());
}

void CombinedLogsWindowController::updateFindResult()
{
    m_content->logTextView()->setHighlight(m_search->pattern(), m_search->current());
    if (m_search->pattern().isEmpty() || !m_search->pattern().isValid()) {
        return;
    }
    const QString more = (m_search->hasMore()              ? tr(" or more")
                                 : m_search->isSearching() ? QStringLiteral("…")
                                                           : QString())
        + (m_search->cutOffLines() > 0 ? tr(" (%1)").arg(tooComplicated(m_search->cutOffLines()))
                                       : QString());
    if (m_search->count() == 0) {
        m_findBar->setResult((m_search->isSearching() ? tr("Searching") : tr("Not found")) + more);
    } else if (const qint64 number = m_search->currentNumber()) {
        m_findBar->setResult(tr("%1 of %2").arg(countedText(number), countedText(m_search->count())) + more);
    } else {
        m_findBar->setResult(tr("%1 found").arg(countedText(m_search->count())) + more);
    }
}

QString CombinedLogsWindowController::statusText() const
{
    return m_status->text();
}

void CombinedLogsWindowController::updateStatus()
{
    const LogDocument &document = m_content->document();
    if (document.cutOffLines() > 0 && m_filterBar->pattern() == document.filter().pattern()) {
        m_filterBar->setResult(tooComplicated(document.cutOffLines()));
    }
    m_save->setEnabled(!m_saver->isBusy());
    m_saveShown->setEnabled(!m_saver->isBusy() && document.isNarrowed());
    if (!m_namesChosen && m_content->hasMoreSourcesThanColours() && !m_names->isChecked()) {
        m_names->setChecked(true);
        m_content->logTextView()->showSourceNames(true);
    }
}

void CombinedLogsWindowController::clear()
{
    m_content->clear();
    m_status->setNotice({});
}

void CombinedLogsWindowController::chooseFile(bool shownOnly)
{
    m_saver->chooseFile(shownOnly ? tr("Save Shown Lines") : tr("Save Log"), m_content->nameSpace,
        [this, shownOnly](const QString &path) { shownOnly ? saveShownTo(path) : saveTo(path); });
}

void CombinedLogsWindowController::saveTo(const QString &path)
{
    LogDocument &document = m_content->document();
    document.commit();
    m_saver->save(document.bytes(), {{0, document.size()}}, path);
}

void CombinedLogsWindowController::saveShownTo(const QString &path)
{
    LogDocument &document = m_content->document();
    document.commit();
    m_saver->save(document.bytes(), document.shown().ranges(0, document.shown().size()), path);
}

void CombinedLogsWindowController::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && !m_findBar->isHidden()) {
        m_findBar->close();
    } else if (event->key() == Qt::Key_Escape && !m_filterBar->isHidden()) {
        m_filterBar->close();
    } else {
        QMainWindow::keyPressEvent(event);
    }
}

void CombinedLogsWindowController::closeEvent(QCloseEvent *event)
{
    m_content->windowWillClose();
    QMainWindow::closeEvent(event);
}

} // namespace tidewright
