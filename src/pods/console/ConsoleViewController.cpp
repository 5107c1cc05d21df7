// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/console/ConsoleViewController.h"

#include "core/WindowState.h"
#include "platform/text/DisplayText.h"
#include "platform/text/LinkDetection.h"
#include "platform/text/TerminalText.h"
#include "platform/threads/MainQueue.h"
#include "pods/console/CommandEntryBar.h"
#include "pods/console/ConsoleStyle.h"
#include "pods/console/ConsoleText.h"
#include "pods/console/ConsoleTextView.h"
#include "pods/console/TypedCommands.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QVBoxLayout>

#include <algorithm>

namespace tidewright {

namespace {

const QString lineFeed = QStringLiteral("\n");

/// Text in which addresses are links that lead to themselves.
std::vector<StyledRun> withLinks(const QString &text)
{
    std::vector<StyledRun> runs;
    qsizetype shown = 0;
    for (const DetectedLink &link : detectLinks(text)) {
        runs.push_back({text.mid(shown, link.range.start - shown), console_style::text()});
        QTextCharFormat format = console_style::link();
        format.setAnchor(true);
        format.setAnchorHref(link.text);
        runs.push_back({link.text, format});
        shown = link.range.end();
    }
    runs.push_back({text.mid(shown), console_style::text()});
    return runs;
}

std::vector<StyledRun> styled(const ConsoleEntry &entry, const QString &error)
{
    using namespace console_text;
    using display_text::shortened;
    using terminal_text::withoutControls;
    std::vector<StyledRun> runs{{logDate(entry.date), console_style::date()},
        {console_style::separatorGlyph + QStringLiteral(" "), console_style::separator()},
        {withoutControls(shortened(entry.command, longestLine)) + lineFeed, console_style::text()}};
    if (!entry.response.isEmpty()) {
        const auto response
            = withLinks(withoutControls(QString(shortened(entry.response, longestResponse) + lineFeed)));
        runs.insert(runs.end(), response.begin(), response.end());
    }
    if (!error.isNull()) {
        runs.push_back({withoutControls(shortened(error, longestLine)) + lineFeed, console_style::error()});
    }
    return runs;
}

} // namespace

ConsoleViewController::ConsoleViewController(QObject *parent)
    : Console(parent)
    , m_view(new QWidget)
    , m_text(new ConsoleTextView)
    , m_bar(new CommandEntryBar)
    , m_typed(std::make_unique<TypedCommands>(*this, m_view))
{
    auto *layout = new QVBoxLayout(m_view);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_text, 1);
    layout->addWidget(m_bar);
    connectViews();
}

ConsoleViewController::~ConsoleViewController()
{
    m_typed.reset();
    if (m_view && !m_view->parent()) {
        delete m_view;
    }
}

void ConsoleViewController::connectViews()
{
    connect(m_bar, &CommandEntryBar::returnPressed, this, &ConsoleViewController::runTypedCommand);
    connect(m_bar, &CommandEntryBar::moveUp, this, &ConsoleViewController::moveUp);
    connect(m_bar, &CommandEntryBar::moveDown, this, &ConsoleViewController::moveDown);
    connect(m_bar, &CommandEntryBar::stopRequested, this, &ConsoleViewController::stopTypedCommands);
    connect(m_typed.get(), &TypedCommands::changed, this, &ConsoleViewController::showTypedCommands);
    connect(m_typed.get(), &TypedCommands::refused, this, &ConsoleViewController::tellRefusal);
    connect(m_text, &ConsoleTextView::menuRequested, this, &ConsoleViewController::extendMenu);
    connect(m_text, &ConsoleTextView::linkActivated, this, &ConsoleViewController::openLink);
}

QWidget *ConsoleViewController::view() const
{
    return m_view;
}

ConsoleTextView *ConsoleViewController::consoleTextView() const
{
    return m_text;
}

QLineEdit *ConsoleViewController::commandEntryTextField() const
{
    return m_bar ? m_bar->field() : nullptr;
}

void ConsoleViewController::setKubeSplitViewController(WindowState *window)
{
    m_window = window;
    m_typed->setWindow(window);
    if (window) {
        connect(window, &WindowState::loadingHintChanged, this, &ConsoleViewController::showDestination);
    }
    showDestination();
}

void ConsoleViewController::showDestination()
{
    if (m_bar && m_window) {
        m_bar->setHint(m_typed->destination());
    }
}

void ConsoleViewController::addEntry(
    const QString &command, const QString &response, const std::optional<ConsoleError> &error)
{
    addCommandEntry({}, command, response, error);
}

void ConsoleViewController::addCommandEntry(const CommandLine &line, const QString &command,
    const QString &response, const std::optional<ConsoleError> &error)
{
    m_entries.push_back({QDateTime::currentDateTimeUtc(), command, response});
    // An empty description is an error all the same, and takes its line.
    const QString description = error ? error->description : QString();
    m_details.push_back({line, error && description.isNull() ? QStringLiteral("") : description});
    if (m_entries.size() - m_shownEntries == 1) {
        postToMain(m_self, [](ConsoleViewController &console) { console.showEntries(); });
    }
}

/// Shows the new entries in their order, a flood of them in pieces between which the window answers the user.
void ConsoleViewController::showEntries()
{
    constexpr qint64 sliceMilliseconds = 8;
    QElapsedTimer slice;
    slice.start();
    while (m_shownEntries < m_entries.size() && slice.elapsed() < sliceMilliseconds) {
        const size_t number = m_shownEntries++;
        if (m_text) {
            m_text->appendEntry(styled(m_entries[number], m_details[number].error), static_cast<int>(number));
        }
    }
    if (m_shownEntries < m_entries.size()) {
        postToMain(m_self, [](ConsoleViewController &console) { console.showEntries(); });
    }
}

void ConsoleViewController::clearLogs()
{
    if (m_text) {
        m_text->empty();
    }
}

void ConsoleViewController::updateScriptState()
{
    postToMain(m_self, [](ConsoleViewController &console) { console.showScriptState(); });
}

void ConsoleViewController::showScriptState()
{
    const QString text
        = scriptsRunning().isEmpty() ? QString() : QLatin1String("Running: ") + scriptsRunning().last();
    if (std::exchange(m_isScriptRunning, !scriptsRunning().isEmpty()) == scriptsRunning().isEmpty()) {
        Q_EMIT isScriptRunningChanged();
    }
    if (std::exchange(m_scriptRunningText, text) != text) {
        Q_EMIT scriptRunningTextChanged();
    }
    if (m_bar) {
        m_bar->setRunningText(m_scriptRunningText, scriptsRunning());
    }
    showTypedCommands();
}

void ConsoleViewController::runTypedCommand()
{
    m_commandHistoryCursor = 0;
    const QString line = m_bar->field()->text().trimmed();
    const QStringList words = console_text::commandWords(line);
    if (words.isEmpty() || !m_window) {
        return; // quotes alone name no program
    }
    m_bar->field()->clear();
    m_typed->run(line, words);
}

/// The line stays at hand: in the field, or in the history when something else is typed there.
void ConsoleViewController::tellRefusal(const QString &line, const QString &reason)
{
    const bool isFieldFree = m_bar && m_bar->field()->text().isEmpty();
    if (isFieldFree) {
        m_bar->field()->setText(line);
    }
    addEntry(isFieldFree ? QString() : line, QString(),
        makeConsoleError(QLatin1String("The command was not run: ") + reason));
}

void ConsoleViewController::showTypedCommands()
{
    if (m_bar) {
        m_bar->setTypedCommands(m_typed->lines() + stoppableScripts());
    }
}

void ConsoleViewController::stopTypedCommands()
{
    m_typed->stop();
    stopScripts();
}

void ConsoleViewController::moveUp()
{
    if (m_commandHistoryCursor == 0) {
        m_lastCommand = m_bar->field()->text();
    }
    ++m_commandHistoryCursor;
    applyHistoryCursor();
}

void ConsoleViewController::moveDown()
{
    --m_commandHistoryCursor;
    applyHistoryCursor();
}

void ConsoleViewController::applyHistoryCursor()
{
    const int count = static_cast<int>(m_entries.size());
    if (m_commandHistoryCursor < 0) {
        m_commandHistoryCursor = 0;
    } else if (m_commandHistoryCursor > count) {
        m_commandHistoryCursor = count;
    } else {
        m_bar->field()->setText(m_commandHistoryCursor == 0
                ? m_lastCommand
                : m_entries[static_cast<size_t>(count - m_commandHistoryCursor)].command);
    }
}

void ConsoleViewController::extendMenu(QMenu *menu, int number)
{
    menu->addSeparator();
    if (number >= 0) {
        const auto entry = static_cast<size_t>(number);
        menu->addAction(tr("Copy Entry"), this, [this, entry] { copyEntry(entry); });
        const QString shellLine = m_details[entry].line.shellLine();
        menu->addAction(tr("Copy as Shell Command"), this,
                [shellLine] { QApplication::clipboard()->setText(shellLine); })
            ->setEnabled(!shellLine.isEmpty() && !display_text::actsWhenPasted(shellLine));
        menu->addSeparator();
    }
    menu->addAction(tr("Clear Console"), this, &ConsoleViewController::clearLogs);
}

/// The whole of it, also what is too long to be shown.
void ConsoleViewController::copyEntry(size_t number) const
{
    QStringList parts(m_entries[number].command);
    for (const QString &part : {m_entries[number].response, m_details[number].error}) {
        if (!part.isEmpty()) {
            parts.append(part);
        }
    }
    QApplication::clipboard()->setText(parts.join(lineFeed));
}

void ConsoleViewController::openLink(const QString &text)
{
    if (const QUrl url = console_text::linkTarget(text); !url.isEmpty()) {
        Q_EMIT linkOpened(url);
    }
}

} // namespace tidewright
