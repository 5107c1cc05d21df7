// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"

namespace tidewright {

class EditFile;
struct ShellResult;

/// What one cluster window has open in the user's editor. Letting it go ends the kubectl runs behind the
/// editors, which themselves go on. Main thread.
class ExternalEdits : public QObject
{
    Q_OBJECT
public:
    /// `window` must outlive the edits.
    explicit ExternalEdits(WindowState &window);
    ~ExternalEdits() override;

    /// Runs a `kubectl edit` once the window is settled, if it then still shows what it shows now. `finished`
    /// is called once, whatever the outcome, unless the window goes first.
    void start(const QStringList &arguments, std::function<void()> finished);

Q_SIGNALS:
    /// The user wants to choose an editor.
    void preferencesRequested();

private:
    void startNow(const QStringList &arguments, std::function<void()> finished);
    std::shared_ptr<EditFile> makeEdit(const QString &kubeConfig);

    WindowState &m_window;
    std::vector<std::weak_ptr<EditFile>> m_edits; ///< those under way, and some that have ended
};

} // namespace tidewright
