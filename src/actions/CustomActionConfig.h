// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace tidewright {

/// What an action's config.json says: one JSON object whose keys are the field names. A key that is absent
/// stays absent here (so does one that is null); unknown keys are passed over. The defaults below are those
/// of an action without a usable config.json.
struct CustomActionConfig
{
    /// "namespace", or the kind of resource that the action applies to.
    QString scope = QStringLiteral("namespace");
    /// A shell script runs in a new terminal window instead of in the background.
    std::optional<bool> open_in_terminal = false;
    /// A Glob that the chosen resource's name must match.
    std::optional<QString> use_name_matching_pattern;
    /// The names of the user's environment variables that the script needs.
    std::optional<QStringList> environment_variables = QStringList();
    /// The text, perhaps empty, of a question that the user must accept before the action runs.
    std::optional<QString> show_warning_text = QString();
    /// The contexts that the action is meant for; absent or empty: all.
    std::optional<QStringList> active_in_contexts = QStringList();
    /// A Python script runs in the embedded interpreter.
    std::optional<bool> is_smart_action = false;
    /// The script changes nothing in the cluster: it also runs in read-only contexts, and without a question
    /// in protected ones.
    std::optional<bool> reads_only = false;

    /// With resources of several namespaces chosen it runs for the first of each; it is not run else.
    std::optional<bool> once_per_namespace = false;

    bool operator==(const CustomActionConfig &) const = default;

    bool isActiveIn(const QString &context) const;

    /// Either a configuration or a sentence without its full stop that says why there is none.
    struct Decoded;
    /// Decodes the bytes of a config.json strictly: a key of another type than documented, or no scope, is an
    /// error. Any thread.
    static Decoded decode(const QByteArray &json);
    /// The same for a file, which may be no regular file or too large (over 1 MiB).
    static Decoded load(const QString &path);
};

struct CustomActionConfig::Decoded
{
    std::optional<CustomActionConfig> config;
    QString error;
    QStringList unknownKeys = {}; ///< passed over
};

} // namespace tidewright
