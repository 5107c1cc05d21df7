// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/console/ConsoleViewController.h"

#include "core/CommandGate.h"
#include "core/KubectlArguments.h"
#include "core/WindowState.h"
#include "platform/text/DisplayText.h"
#include "platform/text/LinkDetection.h"
#include "platform/text/TerminalText.h"
#include "platform/threads/MainQueue.h"
#include "pods/console/CommandEntryBar.h"
#include "pods/console/ConsoleStyle.h"
#include "pods/console/ConsoleText.h"
#include "pods/console/ConsoleTextView.h"
#include "resources/changes/ChangeQuestion.h"

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
constexpr qsizetype longestQuestion = 400; // of a command line that is asked about, in characters

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

/// How a typed line reaches its place.
enum class Reach {
    UserFile, ///< it changes the user's own kubeconfig
    Now, ///< it says itself where it goes, or goes nowhere: it must also run while the window has trouble
    WhenSettled, ///< it goes where the window is, which may be on its way
};

Reach reachOf(const QStringList &words, const WindowState &window)
{
    if (words.first() == QLatin1String("kubectl")) {
        const auto read = KubectlArguments::read(words.mid(1));
        if (read.writesKubeConfig() && !read.namesKubeConfig) {
            return Reach::UserFile;
        }
        if (read.isLocal() || !read.goesByCurrentContext()) {
            return Reach::Now;
        }
    }
    // Without a context the window's view leads nowhere, and kubectl says so.
    return window.currentContext().isEmpty() ? Reach::Now : Reach::WhenSettled;
}

/// Where a typed line goes that does not say so itself, for the field that it is typed into.
QString destinationOf(WindowState &window)
{
    using Console = ConsoleViewController;
    const QString context = window.currentContext();
    const QString nameSpace = window.currentNamespace();
    if (const QString hint = window.loadingHint(); !hint.isEmpty()) {
        return (context.isEmpty() ? Console::tr("Commands go to no cluster yet: %1")
                                  : Console::tr("Commands for the cluster are not run now: %1"))
            .arg(hint.section(QLatin1Char('\n'), 0, 0));
    }
    if (nameSpace != allNamespaces) {
        return Console::tr("Type a command; it runs in %1 / %2").arg(context, nameSpace);
    }
    const auto view = window.kubeCtl().view();
    return view
        ? Console::tr("Type a command; without -n or -A it runs in %1 / %2").arg(context, view->nameSpace())
        : Console::tr("Type a command; it runs in %1").arg(context);
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
    stopTypedCommands();
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
    if (window) {
        connect(window, &WindowState::loadingHintChanged, this, &ConsoleViewController::showDestination);
    }
    showDestination();
}

void ConsoleViewController::showDestination()
{
    if (m_bar && m_window) {
        m_bar->setHint(destinationOf(*m_window));
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
}

/// The place that a typed line acts in unless it says otherwise: one namespace, also while all are shown.
QString ConsoleViewController::typedFor(const ChangePlace &place) const
{
    const auto view = m_window->kubeCtl().view();
    return tr("Typed for:") + QLatin1Char('\n')
        + placeText(place.context, view ? view->nameSpace() : place.nameSpace, place.kubeConfig);
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
    const quint64 id = ++m_lastTyped;
    m_typedCommands.push_back({id, line, nullptr});
    showTypedCommands();
    const StartingPlace starting{
        m_window->kubeConfigPath(), m_window->currentContext(), m_window->kubeCtl().contents()};
    if (const QString reason = gateReason(words, starting); !reason.isEmpty()) {
        refuse(id, reason);
        return;
    }
    const ChangePlace place(*m_window);
    const CommandVerdict verdict = judgeCommand(words, starting);
    if (!verdict.needsConsent()) {
        proceed(id, words, place);
        return;
    }
    const QString details
        = display_text::shortened(line, longestQuestion) + QLatin1String("\n\n") + typedFor(place);
    confirmWhereProtected(m_view, verdict.context,
        {.title = tr("Confirm Command"),
            .message = tr("This command may change the context %1. Are you sure you want to run it?")
                           .arg(verdict.context.name),
            .yes = tr("Run"),
            .accessory = confirmationDetails(details)},
        [self = QPointer(m_self), id, words, place](bool confirmed) {
            if (self && self->find(id)) {
                confirmed ? self->proceed(id, words, place)
                          : self->refuse(id, QStringLiteral("it was not confirmed."));
            }
        });
}

/// Starts it at once, or when the window is settled in the place that it was typed for.
void ConsoleViewController::proceed(quint64 id, const QStringList &words, const ChangePlace &place)
{
    if (!m_window) {
        return;
    }
    const Reach reach = reachOf(words, *m_window);
    if (reach != Reach::WhenSettled) {
        start(id, words, reach == Reach::UserFile);
        return;
    }
    m_window->whenSettled([self = QPointer<ConsoleViewController>(this), id, words, line = find(id)->line,
                              place](const QString &obstacle) {
        if (!place.window) {
            refuseUnseenChange(place, QStringLiteral("\"%1\" was not run").arg(line), obstacle);
            return;
        }
        if (!self || !self->m_window || !self->find(id)) {
            return;
        }
        if (obstacle.isEmpty() && place.isStillShown()) {
            self->start(id, words, false);
            return;
        }
        self->refuse(id,
            obstacle.isEmpty()
                ? QStringLiteral("the window shows another context or namespace than when it was typed.")
                : obstacle);
    });
}

ConsoleViewController::TypedCommand *ConsoleViewController::find(quint64 id)
{
    const auto typed = std::find_if(m_typedCommands.begin(), m_typedCommands.end(),
        [id](const TypedCommand &command) { return command.id == id; });
    return typed == m_typedCommands.end() ? nullptr : &*typed;
}

void ConsoleViewController::start(quint64 id, const QStringList &words, bool inUserFile)
{
    TypedCommand &typed = *find(id);
    typed.shell = inUserFile ? m_window->kubeCtl().makePlainShell() : m_window->kubeCtl().makeForeignShell();
    if (!typed.shell->gate) {
        typed.shell->gate = [place = m_window->kubeCtl().startingPlace()](
                                const QStringList &started) { return gateReason(started, place); };
    }
    tellNamespace(words);
    // The user may be in another window when the command ends: its entry belongs here.
    typed.shell->runToldAsync(
        words, this, [self = QPointer<ConsoleViewController>(m_self), id, inUserFile](const ShellResult &) {
            postToMain(self, [id, inUserFile](ConsoleViewController &owner) {
                owner.typedCommandEnded(id);
                if (inUserFile) {
                    owner.tellUserFile();
                }
            });
        });
}

/// While all namespaces are shown, a command that names none acts in one all the same.
void ConsoleViewController::tellNamespace(const QStringList &words)
{
    const auto view = m_window->kubeCtl().view();
    const auto read = KubectlArguments::read(words.mid(1));
    if (view && m_window->currentNamespace() == allNamespaces && words.first() == QLatin1String("kubectl")
        && !read.isLocal() && !read.namesNamespace) {
        addEntry(QString(),
            tr("All namespaces are shown; this line names none (-n, -A) and so runs in %1")
                .arg(view->nameSpace()), // no full stop: it would make a link of the name
            std::nullopt);
    }
}

void ConsoleViewController::tellUserFile()
{
    const QString context = m_window ? m_window->currentContext() : QString();
    if (!context.isEmpty()) {
        addEntry(QString(),
            tr("This concerned your own kubeconfig. The window still shows the context %1.").arg(context),
            std::nullopt);
    }
}

/// The line stays at hand: in the field, or in the history when something else is typed there.
void ConsoleViewController::refuse(quint64 id, const QString &reason)
{
    const QString line = find(id)->line;
    typedCommandEnded(id);
    const bool isFieldFree = m_bar && m_bar->field()->text().isEmpty();
    if (isFieldFree) {
        m_bar->field()->setText(line);
    }
    addEntry(isFieldFree ? QString() : line, QString(),
        makeConsoleError(QLatin1String("The command was not run: ") + reason));
}

void ConsoleViewController::typedCommandEnded(quint64 id)
{
    std::erase_if(m_typedCommands, [id](const TypedCommand &typed) { return typed.id == id; });
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
    std::erase_if(m_typedCommands, [](const TypedCommand &typed) { return !typed.shell; });
    for (const TypedCommand &typed : m_typedCommands) {
        typed.shell->cancel();
    }
    showTypedCommands();
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
