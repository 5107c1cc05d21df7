// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

namespace tidewright {

/// What may be done in a context, from the laxest to the strictest.
enum class ContextAccess {
    Free,
    Protected, ///< changes are allowed, but each asks for the context's name
    ReadOnly, ///< nothing runs that is not known to read only
};

/// What marks the windows of a context.
enum class ContextColour { None, Red, Amber, Green, Blue, Violet };
/// All of them, in the order shown.
const QList<ContextColour> &contextColours();

/// How the user wants a context to be treated. A plain value; any thread.
struct ContextPolicy
{
    ContextAccess access = ContextAccess::Free;
    ContextColour colour = ContextColour::None;

    bool operator==(const ContextPolicy &) const = default;

    /// As it stands in the settings: "read-only;red".
    QString word() const;
    /// Reads such a word, however it is mangled: an access that is named in it counts, of several the
    /// strictest; what is unknown is ignored. Without a colour, `otherwise` is taken.
    static ContextPolicy read(const QString &word, ContextColour otherwise = ContextColour::None);
};

/// What the name of a context speaks for: protected and red for names like "prod" or "eu-live-2", amber for
/// those of a staging cluster.
ContextPolicy suggestedPolicy(const QString &context);

/// The policies of all contexts by name, in the user defaults ("contextPolicies"), where other instances of
/// the program may change them too.
class ContextPolicies : public QObject
{
    Q_OBJECT
public:
    static ContextPolicies &shared();

    /// The one chosen; else free, with the suggested colour. Any thread.
    static ContextPolicy policy(const QString &context);
    /// The contexts for which something else was chosen.
    static QStringList chosenContexts();
    /// Main thread.
    void set(const QString &context, const ContextPolicy &policy);

Q_SIGNALS:
    void changed();

private:
    ContextPolicies() = default;
};

} // namespace tidewright
