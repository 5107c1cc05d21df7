// SPDX-License-Identifier: GPL-3.0-or-later
#include "pods/console/TypedCommands.h"

#include "core/CommandGate.h"
#include "core/running/KubectlArguments.h"
#include "platform/text/DisplayText.h"
#include "platform/threads/MainQueue.h"
#include "resources/changes/ChangeQuestion.h"

#include <algorithm>

#include <QWidget>

namespace tidewright {

namespace {

constexpr qsizetype longestQuestion = 400; // of a command line that is asked about, in characters

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
    const QString context = window.currentContext();
    const QString nameSpace = window.currentNamespace();
    if (const QString hint = window.loadingHint(); !hint.isEmpty()) {
        return (context.isEmpty() ? TypedCommands::tr("Commands go to no cluster yet: %1")
                                  : TypedCommands::tr("Commands for the cluster are not run now: %1"))
            .arg(hint.section(QLatin1Char('\n'), 0, 0));
    }
    if (nameSpace != allNamespaces) {
        return TypedCommands::tr("Type a command; it runs in %1 / %2").arg(context, nameSpace);
    }
    const auto view = window.kubeCtl().view();
    return view ? TypedCommands::tr("Type a command; without -n or -A it runs in %1 / %2")
                      .arg(context, view->nameSpace())
                : TypedCommands::tr("Type a command; it runs in %1").arg(context);
}

} // namespace

TypedCommands::TypedCommands(Console &console, QWidget *view)
    : m_console(console)
    , m_view(view)
{
}

TypedCommands::~TypedCommands()
{
    for (const Typed &typed : m_commands) {
        if (typed.shell) {
            typed.shell->cancel();
        }
    }
}

void TypedCommands::setWindow(WindowState *window)
{
    m_window = window;
}

QString TypedCommands::destination() const
{
    return m_window ? destinationOf(*m_window) : QString();
}

QStringList TypedCommands::lines() const
{
    QStringList lines;
    for (const Typed &typed : m_commands) {
        lines.append(typed.line);
    }
    return lines;
}

/// The place that a typed line acts in unless it says otherwise: one namespace, also while all are shown.
QString TypedCommands::typedFor(const ChangePlace &place) const
{
    const auto view = m_window->kubeCtl().view();
    return tr("Typed for:") + QLatin1Char('\n')
        + placeText(place.context, view ? view->nameSpace() : place.nameSpace, place.kubeConfig);
}

void TypedCommands::run(const QString &line, const QStringList &words)
{
    if (!m_window) {
        return;
    }
    const quint64 id = ++m_last;
    m_commands.push_back({id, line, nullptr});
    Q_EMIT changed();
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
        [self = QPointer(this), id, words, place](bool confirmed) {
            if (self && self->find(id)) {
                confirmed ? self->proceed(id, words, place)
                          : self->refuse(id, QStringLiteral("it was not confirmed."));
            }
        });
}

/// Starts it at once, or when the window is settled in the place that it was typed for.
void TypedCommands::proceed(quint64 id, const QStringList &words, const ChangePlace &place)
{
    if (!m_window) {
        return;
    }
    const Reach reach = reachOf(words, *m_window);
    if (reach != Reach::WhenSettled) {
        start(id, words, reach == Reach::UserFile);
        return;
    }
    m_window->whenSettled([self = QPointer<TypedCommands>(this), id, words, line = find(id)->line, place](
                              const QString &obstacle) {
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

TypedCommands::Typed *TypedCommands::find(quint64 id)
{
    const auto typed = std::find_if(
        m_commands.begin(), m_commands.end(), [id](const Typed &command) { return command.id == id; });
    return typed == m_commands.end() ? nullptr : &*typed;
}

void TypedCommands::start(quint64 id, const QStringList &words, bool inUserFile)
{
    Typed &typed = *find(id);
    typed.shell = inUserFile ? m_window->kubeCtl().makePlainShell() : m_window->kubeCtl().makeForeignShell();
    typed.shell->outputLimit = Shell::foreignOutputLimit;
    if (!typed.shell->gate) {
        typed.shell->gate = [place = m_window->kubeCtl().startingPlace()](
                                const QStringList &started) { return gateReason(started, place); };
    }
    tellNamespace(words);
    // The user may be in another window when the command ends: its entry belongs here.
    typed.shell->runToldAsync(
        words, &m_console, [self = QPointer<TypedCommands>(this), id, inUserFile](const ShellResult &) {
            postToMain(self, [id, inUserFile](TypedCommands &owner) {
                owner.ended(id);
                if (inUserFile) {
                    owner.tellUserFile();
                }
            });
        });
}

/// While all namespaces are shown, a command that names none acts in one all the same.
void TypedCommands::tellNamespace(const QStringList &words)
{
    const auto view = m_window->kubeCtl().view();
    const auto read = KubectlArguments::read(words.mid(1));
    if (view && m_window->currentNamespace() == allNamespaces && words.first() == QLatin1String("kubectl")
        && !read.isLocal() && !read.namesNamespace) {
        m_console.addEntry(QString(),
            tr("All namespaces are shown; this line names none (-n, -A) and so runs in %1")
                .arg(view->nameSpace()), // no full stop: it would make a link of the name
            std::nullopt);
    }
}

void TypedCommands::tellUserFile()
{
    const QString context = m_window ? m_window->currentContext() : QString();
    if (!context.isEmpty()) {
        m_console.addEntry(QString(),
            tr("This concerned your own kubeconfig. The window still shows the context %1.").arg(context),
            std::nullopt);
    }
}

void TypedCommands::refuse(quint64 id, const QString &reason)
{
    const QString line = find(id)->line;
    ended(id);
    Q_EMIT refused(line, reason);
}

void TypedCommands::ended(quint64 id)
{
    std::erase_if(m_commands, [id](const Typed &typed) { return typed.id == id; });
    Q_EMIT changed();
}

void TypedCommands::stop()
{
    std::erase_if(m_commands, [](const Typed &typed) { return !typed.shell; });
    for (const Typed &typed : m_commands) {
        typed.shell->cancel();
    }
    Q_EMIT changed();
}

} // namespace tidewright
