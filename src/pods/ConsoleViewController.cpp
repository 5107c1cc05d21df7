// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/ConsoleViewController.h"

#include "platform/DisplayText.h"
#include "platform/LinkDetection.h"
#include "platform/MainQueue.h"
#include "pods/CommandEntryBar.h"
#include "pods/ConsoleStyle.h"
#include "pods/ConsoleText.h"
#include "pods/ConsoleTextView.h"
#include "resources/WindowState.h"

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

/// Whether a command goes by the kubeconfig's current context and namespace. Commands about the kubeconfig
/// or the client itself, and those that say where they go, must also run while the window has trouble.
bool goesByCurrentContext(const QStringList &words)
{
    static const QStringList local{QStringLiteral("config"), QStringLiteral("version"),
        QStringLiteral("help"), QStringLiteral("options"), QStringLiteral("completion"),
        QStringLiteral("plugin")};
    if (words.first() != QLatin1String("kubectl")) {
        return false;
    }
    const auto saysWhere = [](const QString &word) {
        return word == QLatin1String("--context") || word.startsWith(QLatin1String("--context="))
            || word == QLatin1String("--kubeconfig") || word.startsWith(QLatin1String("--kubeconfig="));
    };
    // An option before the command may take the next word for its value.
    const auto isOwnOption = [](const QString &word) {
        return word.startsWith(QLatin1Char('-')) && word.contains(QLatin1Char('='));
    };
    const auto command = std::find_if_not(words.begin() + 1, words.end(), isOwnOption);
    const auto end = std::find(words.begin() + 1, words.end(), QLatin1String("--"));
    return !local.contains(command == words.end() ? QString() : *command)
        && std::none_of(words.begin() + 1, end, saysWhere);
}

} // namespace

ConsoleViewController::ConsoleViewController(QObject *parent)
    : Console(parent)
    , m_view(new QWidget)
    , m_text(new ConsoleTextView)
    , m_bar(new CommandEntryBar)
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
    for (const TypedCommand &typed : m_typedCommands) {
        typed.shell->cancel();
    }
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
        = scriptsRunning.isEmpty() ? QString() : QLatin1String("Running: ") + scriptsRunning.last();
    if (std::exchange(m_isScriptRunning, !scriptsRunning.isEmpty()) == scriptsRunning.isEmpty()) {
        Q_EMIT isScriptRunningChanged();
    }
    if (std::exchange(m_scriptRunningText, text) != text) {
        Q_EMIT scriptRunningTextChanged();
    }
    if (m_bar) {
        m_bar->setRunningText(m_scriptRunningText, scriptsRunning);
    }
}

void ConsoleViewController::runTypedCommand()
{
    m_commandHistoryCursor = 0;
    const QString line = m_bar->field()->text().trimmed();
    if (line.isEmpty() || !m_window) {
        return;
    }
    const QStringList words = console_text::commandWords(line);
    if (words.isEmpty()) {
        return; // quotes alone name no program
    }
    m_bar->field()->clear();
    const std::shared_ptr<Shell> shell = m_window->kubeCtl().makeShell();
    m_typedCommands.push_back({shell, line});
    showTypedCommands();
    const bool windowHasChosen
        = !m_window->currentContext().isEmpty() && !m_window->currentNamespace().isEmpty();
    if (!goesByCurrentContext(words) || !windowHasChosen) {
        start(shell, words, line);
        return;
    }
    m_window->agreeWithKubeConfig(
        [self = QPointer<ConsoleViewController>(this), shell, words, line,
            context = m_window->currentContext(), nameSpace = m_window->currentNamespace()](bool agreed) {
            if (!self || !self->m_window) {
                return;
            }
            const WindowState &window = *self->m_window;
            const bool isSame = window.currentContext() == context && window.currentNamespace() == nameSpace;
            if (agreed && isSame) {
                self->start(shell, words, line);
                return;
            }
            if (agreed) {
                self->addEntry(QString(), QString(),
                    makeConsoleError(QStringLiteral(
                        "The window shows another context or namespace than when the command was typed.")));
            }
            self->refuse(shell.get(), line);
        });
}

void ConsoleViewController::start(
    const std::shared_ptr<Shell> &shell, const QStringList &words, const QString &line)
{
    // The user may be in another window when the command ends: its entry belongs here.
    shell->runAsync(words, true, this,
        [self = QPointer<ConsoleViewController>(m_self), line, ended = shell.get()](
            const ShellResult &result) {
            // What could not be started at all is not logged.
            const std::optional<QString> failure = ended->process() ? std::nullopt : result.error;
            postToMain(self, [ended, line, failure](ConsoleViewController &owner) {
                if (failure) {
                    owner.addEntry(line, QString(), makeConsoleError(*failure));
                }
                owner.typedCommandEnded(ended);
            });
        });
}

/// The console has said why. The line stays at hand.
void ConsoleViewController::refuse(const Shell *shell, const QString &line)
{
    typedCommandEnded(shell);
    if (m_bar && m_bar->field()->text().isEmpty()) {
        m_bar->field()->setText(line);
    } else {
        addEntry(line, QString(), makeConsoleError(QStringLiteral("The command was not run.")));
    }
}

void ConsoleViewController::typedCommandEnded(const Shell *shell)
{
    std::erase_if(m_typedCommands, [shell](const TypedCommand &typed) { return typed.shell.get() == shell; });
    showTypedCommands();
}

void ConsoleViewController::showTypedCommands()
{
    QStringList lines;
    for (const TypedCommand &typed : m_typedCommands) {
        lines.append(typed.line);
    }
    if (m_bar) {
        m_bar->setTypedCommands(lines);
    }
}

void ConsoleViewController::stopTypedCommands()
{
    for (const TypedCommand &typed : m_typedCommands) {
        typed.shell->cancel();
    }
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
