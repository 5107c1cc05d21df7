// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/CommandLine.h"

#include <algorithm>

namespace tidewright {

namespace {

bool isPlain(QChar character)
{
    constexpr std::u16string_view safe
        = u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@%+=:,./-";
    return safe.find(character.unicode()) != std::u16string_view::npos;
}

QString inQuotes(QString text)
{
    text.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

QString quoted(const QString &argument)
{
    const bool plain = !argument.isEmpty() && std::all_of(argument.cbegin(), argument.cend(), isPlain);
    return plain ? argument : inQuotes(argument);
}

/// A shell takes some first words for assignments or for words of its own language.
bool shellReadsOtherwise(const QString &program)
{
    static const QStringList words{QStringLiteral("case"), QStringLiteral("do"), QStringLiteral("done"),
        QStringLiteral("elif"), QStringLiteral("else"), QStringLiteral("esac"), QStringLiteral("fi"),
        QStringLiteral("for"), QStringLiteral("function"), QStringLiteral("if"), QStringLiteral("in"),
        QStringLiteral("select"), QStringLiteral("then"), QStringLiteral("time"), QStringLiteral("until"),
        QStringLiteral("while")};
    return program.startsWith(QLatin1Char('-')) || program.contains(QLatin1Char('='))
        || words.contains(program);
}

} // namespace

QString CommandLine::shellLine() const
{
    if (arguments.isEmpty()) {
        return {};
    }
    QStringList words;
    if (!kubeConfig.isEmpty()) {
        words.append(QLatin1String("KUBECONFIG=") + inQuotes(kubeConfig));
    }
    if (shellReadsOtherwise(arguments.first())) {
        words.append(QStringLiteral("env")); // as the command was started in the first place
    }
    for (const QString &argument : arguments) {
        words.append(quoted(argument));
    }
    return words.join(QLatin1Char(' '));
}

} // namespace tidewright
