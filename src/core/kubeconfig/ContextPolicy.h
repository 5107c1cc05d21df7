// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
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

/// What identifies a context: its name and the list of files that it is read from. The same name in another
/// list is another context, which may lead elsewhere. A plain value; any thread.
struct ContextKey
{
    ContextKey() = default;
    /// `configPath` as a window has it: a path, a list of them, or empty for kubectl's default.
    ContextKey(const QString &configPath, const QString &context);

    bool operator==(const ContextKey &) const = default;

    /// As it stands in the settings: the name, a line feed, and the files separated by colons.
    QString word() const;
    static ContextKey read(const QString &word);

    QString name;
    QString files = {}; ///< empty in an entry that was made by hand: the name in every kubeconfig
};

/// How the user wants a context to be treated. A plain value; any thread.
struct ContextPolicy
{
    ContextAccess access = ContextAccess::Free;
    ContextColour colour = ContextColour::None;
    bool isReadable = true; ///< what the settings hold is a policy

    bool operator==(const ContextPolicy &) const = default;

    /// As it stands in the settings: "read-only;red".
    QString word() const;
    /// Reads such a word, in which the colour may be missing: `otherwise` is taken then. What cannot be read
    /// counts as read-only.
    static ContextPolicy read(const QString &word, ContextColour otherwise = ContextColour::None);
};

/// What the name of a context speaks for: protected and red for names like "prod" or "eu-live-2", amber for
/// those of a staging cluster, green for those of a development or test cluster.
ContextPolicy suggestedPolicy(const QString &context);

/// The policies of all contexts, in the user defaults ("contextPolicies", a dictionary), where other
/// instances of the program may change them too. An entry named "*" counts for every context without one of
/// its own. Settings that were lost leave one that cannot be read.
class ContextPolicies : public QObject
{
    Q_OBJECT
public:
    static ContextPolicies &shared();

    /// The one chosen for the context. Without one the strictest of those chosen for its name in other
    /// kubeconfigs, so that none becomes freer by being read from elsewhere; else free, with the suggested
    /// colour. Any thread.
    static ContextPolicy policy(const ContextKey &context);
    /// The contexts that something was chosen for. Any thread.
    static QList<ContextKey> chosen();
    /// Keeps what was lost from counting as free the next time. Main thread.
    void keepWhatWasLost();
    /// Main thread.
    void set(const ContextKey &context, const ContextPolicy &policy);

Q_SIGNALS:
    void changed();

private:
    ContextPolicies() = default;
};

} // namespace tidewright
