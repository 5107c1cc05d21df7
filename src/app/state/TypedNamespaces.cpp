// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/state/TypedNamespaces.h"

#include "platform/settings/UserDefaults.h"

#include <QObject>

#include <algorithm>

namespace tidewright::typed_namespaces {

namespace {

const auto typedKey = QStringLiteral("typedNamespaces"); // a context to names with blanks between them
constexpr qsizetype mostRemembered = 20;
constexpr qsizetype longestName = 63; // of an RFC 1123 label, which the API server asks for

bool isLetterOrDigit(QChar character)
{
    return (character >= u'a' && character <= u'z') || (character >= u'0' && character <= u'9');
}

UserDefaults::Dictionary stored()
{
    return userDefaults().dictionary(typedKey).value_or(UserDefaults::Dictionary());
}

} // namespace

QStringList of(const QString &context)
{
    return stored().value(context).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

void remember(const QString &context, const QString &name)
{
    QStringList names = of(context);
    names.removeAll(name);
    names.prepend(name);
    UserDefaults::Dictionary all = stored();
    all.insert(context, names.first(qMin(mostRemembered, names.size())).join(QLatin1Char(' ')));
    userDefaults().set(typedKey, all);
}

QString problem(const QString &name)
{
    const bool isName = !name.isEmpty() && name.size() <= longestName && isLetterOrDigit(name.front())
        && isLetterOrDigit(name.back()) && std::all_of(name.begin(), name.end(), [](QChar character) {
               return character == u'-' || isLetterOrDigit(character);
           });
    return isName
        ? QString()
        : QObject::tr("The name of a namespace has small letters, digits and “-” between them, %1 at "
                      "most.")
              .arg(longestName);
}

} // namespace tidewright::typed_namespaces
