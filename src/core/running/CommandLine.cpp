// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/running/CommandLine.h"

#include "core/running/KubectlArguments.h"
#include "platform/text/DisplayText.h"

#include <algorithm>

namespace tidewright {

namespace {

bool isPlain(QChar character)
{
    constexpr std::u16string_view safe
        = u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@%+=:,./-";
    return safe.find(character.unicode()) != std::u16string_view::npos;
}

/// Every byte that is not plain as the shell's $'...' writes it.
QString inEscapes(const QString &text)
{
    QString written = QStringLiteral("$'");
    for (const char byte : text.toUtf8()) {
        const QChar character = QLatin1Char(byte);
        written += isPlain(character)
            ? QString(character)
            : QStringLiteral("\\%1").arg(static_cast<uchar>(byte), 3, 8, QLatin1Char('0'));
    }
    return written + QLatin1Char('\'');
}

QString inQuotes(QString text)
{
    if (display_text::actsWhenPasted(text)) {
        return inEscapes(text);
    }
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
    if (!place.kubeConfig.isEmpty()) {
        words.append(QLatin1String("KUBECONFIG=") + inQuotes(place.kubeConfig));
    }
    if (shellReadsOtherwise(arguments.first())) {
        words.append(QStringLiteral("env")); // as the command was started in the first place
    }
    for (const QString &argument : arguments) {
        words.append(quoted(argument));
        if (words.last() == QLatin1String("kubectl") && &argument == &arguments.first()) {
            words += placeOptions();
        }
    }
    return words.join(QLatin1Char(' '));
}

/// What the command line itself leaves to the kubeconfig's current context.
QStringList CommandLine::placeOptions() const
{
    const KubectlArguments read = KubectlArguments::read(arguments.mid(1));
    QStringList options;
    if (read.isLocal() || !read.goesByCurrentContext()) {
        return options;
    }
    if (!place.context.isEmpty()) {
        options.append(quoted(QLatin1String("--context=") + place.context));
    }
    if (!place.nameSpace.isEmpty() && !read.namesNamespace) {
        options.append(quoted(QLatin1String("--namespace=") + place.nameSpace));
    }
    return options;
}

} // namespace tidewright
