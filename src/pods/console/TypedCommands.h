// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/WindowState.h"

#include <QPointer>

class QWidget;

namespace tidewright {

struct ChangePlace;

/// The command lines that the user types into the console of one window: where each goes, what is asked
/// before it, and its run. Letting it go ends those that run. Main thread.
class TypedCommands : public QObject
{
    Q_OBJECT
public:
    /// `console` gets the entries; questions stand over the window of `view`. Both must outlive it.
    TypedCommands(Console &console, QWidget *view);
    ~TypedCommands() override;

    /// Through whose kubectl they run; may be null.
    void setWindow(WindowState *window);
    /// Where a line goes that does not say so itself, for the field that it is typed into.
    QString destination() const;
    /// Those under way, oldest first.
    QStringList lines() const;

    /// `words` are those of the line, at least one.
    void run(const QString &line, const QStringList &words);
    /// Ends those that run. Their entries show what they had printed.
    void stop();

Q_SIGNALS:
    /// A line is under way, or is not any more.
    void changed();
    void refused(const QString &line, const QString &reason);

private:
    struct Typed
    {
        quint64 id;
        QString line;
        std::shared_ptr<Shell> shell; ///< null until the window is settled
    };

    Typed *find(quint64 id);
    void proceed(quint64 id, const QStringList &words, const ChangePlace &place);
    void start(quint64 id, const QStringList &words, bool inUserFile);
    QString typedFor(const ChangePlace &place) const;
    void tellNamespace(const QStringList &words);
    void tellUserFile();
    void refuse(quint64 id, const QString &reason);
    void ended(quint64 id);

    Console &m_console;
    const QPointer<QWidget> m_view;
    QPointer<WindowState> m_window;
    std::vector<Typed> m_commands;
    quint64 m_last = 0;
};

} // namespace tidewright
