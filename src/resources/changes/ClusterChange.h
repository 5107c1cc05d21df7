// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"
#include "core/kubeconfig/ContextPolicy.h"
#include "resources/kinds/ObjectName.h"
#include "resources/kinds/ResourceKind.h"

#include <QPointer>

class QWidget;

namespace tidewright {

/// Where a change to the cluster goes: what the window showed when the user asked for it. Main thread only.
struct ChangePlace
{
    explicit ChangePlace(WindowState &shown);

    /// The window is there, and shows the same context and namespace as then.
    bool isStillShown() const;
    /// "Context: ...", for namespaced kinds "Namespace: ...", and "Kubeconfig: ..." when that is not
    /// kubectl's default, each on a line of its own.
    QString text(const ResourceKind &kind) const;
    /// The same for objects in that namespace.
    QString text(const ResourceKind &kind, const QString &objectNamespace) const;
    /// All of them.
    QString text() const;
    /// What the context's policy goes by.
    ContextKey key() const { return {kubeConfig, context}; }

    QPointer<WindowState> window;
    QString context;
    QString nameSpace;
    QString kubeConfig; ///< the window's path, or list of paths
};

/// How a question names a place: a line each for the context, the namespace unless it is empty, and the
/// kubeconfig unless `configPath` means kubectl's default.
QString placeText(const QString &context, const QString &nameSpace, const QString &configPath);

/// Why these names cannot stand in an argument list or in the environment of an action: kubectl would take
/// one of them for something else. A sentence without its beginning, or empty.
QString nameObstacle(const QStringList &names);
/// Why no command can tell these objects by name and namespace: one of the two cannot stand in an argument
/// list, or the namespace is not known. Empty when one can.
QString whyNotByName(const ResourceKind &kind, const ObjectNames &objects);

ContextKey shownContext(const WindowState &window);
/// Why nothing may be changed in the window's context: a sentence; empty when changes are allowed.
QString changeObstacle(const WindowState &window);

/// Whether nothing stands in the way of a command, which is when `obstacle` is empty. Otherwise the window's
/// console says what was not done ("Nothing was deleted") and why. So do the next three.
bool allows(WindowState &window, const QString &notDone, const QString &obstacle);
/// Whether a command can tell these objects by name and namespace.
bool allowsNames(
    WindowState &window, const ResourceKind &kind, const ObjectNames &objects, const QString &notDone);
/// The same for a command that changes them: the window's context has to allow that too.
bool allowsChange(
    WindowState &window, const ResourceKind &kind, const ObjectNames &objects, const QString &notDone);
/// Whether a command may be started that was given in `place`, now that the window has settled with that
/// obstacle. When the window is gone, the user learns of it elsewhere.
bool allowsStart(const ChangePlace &place, const QString &notDone, const QString &obstacle);

/// Says in the window's console what was not done and why.
void refuseChange(WindowState &window, const QString &notDone, const QString &reason);
/// The same when the window shows another place by now.
void refuseMovedChange(WindowState &window, const QString &notDone);
/// Says so in the main window's console and as a notification: the window itself is gone.
void refuseUnseenChange(const ChangePlace &place, const QString &notDone, const QString &reason);

/// Runs a command that changes the cluster, in `place` or not at all: once the window is settled there, and
/// only while it shows what it showed. Otherwise the window's console says `notDone` and why. Its outcome is
/// told in that console, and in the main window's and as a notification when the window is gone by then.
/// `finished` is called on the main thread after the command has ended, whatever its outcome, or was not run;
/// not without the window.
void runChange(const ChangePlace &place, const QStringList &command, const QString &notDone,
    std::function<void()> finished = {});

/// A change that does not fit into one command line.
struct ChangeCommands
{
    std::vector<QStringList> lines;
    /// Whether the rest is wanted all the same after one that failed. Any thread; not there: it is not.
    std::function<bool(const ShellResult &result)> goesOnAfter = {};
};
/// The same for several, one after the other, all in the place of the first: the window may show another one
/// by then, or be gone. Each has its entry, and behind the last one stands how many were run. They stop when
/// the context leads elsewhere.
void runChange(const ChangePlace &place, const ChangeCommands &commands, const QString &notDone,
    std::function<void()> finished = {});

/// Further lines for a confirmation; no markup, names come from the cluster.
QWidget *confirmationDetails(const QString &text);

} // namespace tidewright
