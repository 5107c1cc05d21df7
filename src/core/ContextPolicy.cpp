// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ContextPolicy.h"

#include "platform/UserDefaults.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>

namespace tidewright {

namespace {

const auto policiesKey = QStringLiteral("contextPolicies");

constexpr std::array<QLatin1String, 3> accessWords{
    QLatin1String("free"), QLatin1String("protected"), QLatin1String("read-only")};
constexpr std::array<QLatin1String, 6> colourWords{QLatin1String("none"), QLatin1String("red"),
    QLatin1String("amber"), QLatin1String("green"), QLatin1String("blue"), QLatin1String("violet")};

/// The words that a name consists of, in lower case: "EU-prod2" is "eu" and "prod".
QStringList partsOf(const QString &name)
{
    static const QRegularExpression other(QStringLiteral("[^a-z]+"));
    return name.toLower().split(other, Qt::SkipEmptyParts);
}

ContextAccess accessNamedIn(const QString &word)
{
    const QString letters = partsOf(word).join(QString());
    return letters.contains(QLatin1String("readonly")) ? ContextAccess::ReadOnly
        : letters.contains(QLatin1String("protect"))   ? ContextAccess::Protected
                                                       : ContextAccess::Free;
}

ContextPolicy policyIn(const UserDefaults::Dictionary &chosen, const QString &context)
{
    const ContextColour colour = suggestedPolicy(context).colour;
    return ContextPolicy::read(chosen.value(context), colour);
}

} // namespace

const QList<ContextColour> &contextColours()
{
    static const QList<ContextColour> colours{ContextColour::None, ContextColour::Red, ContextColour::Amber,
        ContextColour::Green, ContextColour::Blue, ContextColour::Violet};
    return colours;
}

QString ContextPolicy::word() const
{
    return accessWords.at(static_cast<std::size_t>(access)) + QLatin1Char(';')
        + colourWords.at(static_cast<std::size_t>(colour));
}

ContextPolicy ContextPolicy::read(const QString &word, ContextColour otherwise)
{
    const QStringList parts = partsOf(word);
    const auto &colours = contextColours();
    const auto named = std::find_if(colours.begin(), colours.end(), [&](ContextColour colour) {
        return parts.contains(colourWords.at(static_cast<std::size_t>(colour)));
    });
    return {accessNamedIn(word), named == colours.end() ? otherwise : *named};
}

ContextPolicy suggestedPolicy(const QString &context)
{
    const QStringList parts = partsOf(context);
    const auto has = [&parts](std::initializer_list<const char *> words) {
        return std::any_of(words.begin(), words.end(),
            [&parts](const char *word) { return parts.contains(QLatin1String(word)); });
    };
    if (has({"staging", "stage", "stg", "preprod", "preproduction"})) {
        return {ContextAccess::Free, ContextColour::Amber};
    }
    if (has({"prod", "production", "prd", "live"})) {
        if (has({"pre"})) {
            return {ContextAccess::Free, ContextColour::Amber};
        }
        return has({"non", "not", "no"}) ? ContextPolicy()
                                         : ContextPolicy{ContextAccess::Protected, ContextColour::Red};
    }
    return {};
}

ContextPolicies &ContextPolicies::shared()
{
    static ContextPolicies policies;
    return policies;
}

ContextPolicy ContextPolicies::policy(const QString &context)
{
    return policyIn(userDefaults().texts(policiesKey), context);
}

QStringList ContextPolicies::chosenContexts()
{
    return userDefaults().texts(policiesKey).keys();
}

void ContextPolicies::set(const QString &context, const ContextPolicy &policy)
{
    UserDefaults::Dictionary chosen = userDefaults().texts(policiesKey);
    if (policy == policyIn({}, context)) {
        chosen.remove(context);
    } else {
        chosen.insert(context, policy.word());
    }
    userDefaults().set(policiesKey, chosen);
    Q_EMIT changed();
}

} // namespace tidewright
