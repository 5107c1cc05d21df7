// SPDX-License-Identifier: GPL-3.0-or-later
#include "external/InstalledApplications.h"

#include "external/DesktopApplications.h"
#include "external/Terminal.h"
#include "platform/desktop/Diagnostics.h"

#include <QComboBox>

#include <algorithm>
#include <array>

namespace tidewright {

namespace {

/// An editor, by the id of its desktop entry. Each command waits for its window: one that handed the file to
/// a running instance and returned would end the edit before it began.
struct Editor
{
    const char *title;
    const char *desktopId; ///< null: there is none for this system
    const char *commandLine;
};

constexpr std::array<Editor, 8> editors{{
    {"Atom", "atom.desktop", "atom -w"},
    {"BBEdit", nullptr, nullptr},
    {"Sublime Text", "sublime_text.desktop", "subl -n -w"},
    {"Visual Studio Code", "code.desktop", "code -n -w"},
    {"Kate", "org.kde.kate.desktop", "kate -b -n"},
    {"gedit", "org.gnome.gedit.desktop", "gedit -s -w"},
    {"GVim", "gvim.desktop", "gvim -f"},
    {"Emacs", "emacs.desktop", "emacs"},
}};

void addOnce(QComboBox &list, const QString &title)
{
    if (list.findText(title, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0) {
        list.addItem(title);
    }
}

} // namespace

void scanInstalledApplications(QComboBox &terminalList, QComboBox &editorList)
{
    if (const QString problem = applicationFoldersProblem(); !problem.isEmpty()) {
        writeDiagnostic(problem);
        return;
    }
    if (hasSchemeHandler(iTermScheme)) {
        addOnce(terminalList, iTermTitle);
    }
    for (const Editor &editor : editors) {
        if (editor.desktopId && isApplicationInstalled(QLatin1String(editor.desktopId))) {
            addOnce(editorList, QLatin1String(editor.title));
        }
    }
}

std::optional<QString> editorCommandLine(const QString &title)
{
    const auto *const editor = std::find_if(editors.begin(), editors.end(),
        [&title](const Editor &candidate) { return title == QLatin1String(candidate.title); });
    return editor != editors.end() && editor->commandLine
        ? std::optional<QString>(QLatin1String(editor->commandLine))
        : std::nullopt;
}

} // namespace tidewright
