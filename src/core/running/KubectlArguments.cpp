// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/KubectlArguments.h"

#include <QRegularExpression>

#include <utility>

namespace tidewright {

namespace {

/// The options of every command that take a value.
bool takesValue(const QString &option)
{
    static const QStringList options{QStringLiteral("--as"), QStringLiteral("--as-group"),
        QStringLiteral("--as-uid"), QStringLiteral("--cache-dir"), QStringLiteral("--certificate-authority"),
        QStringLiteral("--client-certificate"), QStringLiteral("--client-key"), QStringLiteral("--cluster"),
        QStringLiteral("--context"), QStringLiteral("--kubeconfig"), QStringLiteral("--log-file"),
        QStringLiteral("--namespace"), QStringLiteral("--password"), QStringLiteral("--profile"),
        QStringLiteral("--profile-output"), QStringLiteral("--request-timeout"), QStringLiteral("--server"),
        QStringLiteral("--tls-server-name"), QStringLiteral("--token"), QStringLiteral("--user"),
        QStringLiteral("--username"), QStringLiteral("--v"), QStringLiteral("--vmodule"),
        QStringLiteral("-n"), QStringLiteral("-s"), QStringLiteral("-v")};
    return options.contains(option);
}

bool takesNoValue(const QString &option)
{
    static const QStringList options{QStringLiteral("--help"), QStringLiteral("-h"),
        QStringLiteral("--insecure-skip-tls-verify"), QStringLiteral("--match-server-version"),
        QStringLiteral("--warnings-as-errors"), QStringLiteral("--disable-compression")};
    return options.contains(option);
}

/// "-nshop" is "-n" and "shop".
bool isShort(const QString &word, QLatin1String option)
{
    return word.startsWith(option) && !word.startsWith(QLatin1String("--"));
}

/// "-v6", "-shttps://..."
bool holdsItsValue(const QString &word)
{
    return word.size() > 2
        && (isShort(word, QLatin1String("-n")) || isShort(word, QLatin1String("-s"))
            || isShort(word, QLatin1String("-v")));
}

/// "-s", "-shttps://..." and "-As": in a group of short options every letter before one that takes the rest
/// for its value is an option.
bool isServerOption(const QString &word, const QString &option)
{
    static const QStringList options{QStringLiteral("--server"), QStringLiteral("--cluster")};
    static const QRegularExpression group(QStringLiteral("^-[^-nvolfck=s]*s"));
    return options.contains(option) || group.match(word).hasMatch();
}

bool isUserOption(const QString &option)
{
    static const QStringList options{QStringLiteral("--user"), QStringLiteral("--token"),
        QStringLiteral("--username"), QStringLiteral("--password"), QStringLiteral("--client-certificate"),
        QStringLiteral("--client-key")};
    return options.contains(option) || option == QLatin1String("--as")
        || option.startsWith(QLatin1String("--as-"));
}

} // namespace

KubectlArguments KubectlArguments::read(const QStringList &arguments)
{
    KubectlArguments result;
    bool isCertain = true;
    bool mayTakeNext = false; // for its value: an option that is not known
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &word = arguments.at(i);
        const bool mayBeValue = std::exchange(mayTakeNext, false);
        if (word == QLatin1String("--") && !mayBeValue) {
            break;
        }
        if (!word.startsWith(QLatin1Char('-')) || word == QLatin1String("-")) {
            if (result.isReadable) {
                result.words.append(word);
                result.certainWords += isCertain ? 1 : 0;
            }
            continue;
        }
        const QString option = word.section(QLatin1Char('='), 0, 0);
        const bool hasValue = option.size() < word.size();
        const bool valueFollows = !hasValue && takesValue(option);
        if (option == QLatin1String("--context")) {
            result.namesContext = true;
            result.context = hasValue ? word.section(QLatin1Char('='), 1) : arguments.value(i + 1);
            result.contextIsCertain = isCertain && result.contexts.isEmpty();
            result.contexts.append(result.context);
        } else if (option == QLatin1String("--kubeconfig")) {
            result.namesKubeConfig = true;
        } else if (option == QLatin1String("--namespace") || option == QLatin1String("--all-namespaces")
            || option == QLatin1String("-A") || isShort(word, QLatin1String("-n"))) {
            result.namesNamespace = true;
            isCertain = isCertain && (hasValue || valueFollows || holdsItsValue(word));
        } else if (!hasValue && !valueFollows && !holdsItsValue(word) && !takesNoValue(option)) {
            result.isReadable = result.isReadable && !result.words.isEmpty();
            isCertain = false;
            mayTakeNext = true;
        }
        result.namesServer = result.namesServer || isServerOption(word, option);
        result.namesUser = result.namesUser || isUserOption(option);
        i += valueFollows ? 1 : 0;
    }
    return result;
}

bool KubectlArguments::isLocal() const
{
    static const QStringList commands{QStringLiteral("config"), QStringLiteral("help"),
        QStringLiteral("options"), QStringLiteral("completion"), QStringLiteral("plugin"),
        QStringLiteral("version"), QStringLiteral("kustomize")};
    return isReadable && (words.isEmpty() || commands.contains(words.first()));
}

bool KubectlArguments::writesKubeConfig() const
{
    static const QStringList reading{QStringLiteral("view"), QStringLiteral("get-contexts"),
        QStringLiteral("get-clusters"), QStringLiteral("get-users"), QStringLiteral("current-context")};
    return words.size() > 1 && words.first() == QLatin1String("config") && !reading.contains(words.at(1));
}

} // namespace tidewright
