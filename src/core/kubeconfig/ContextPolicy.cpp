// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/kubeconfig/ContextPolicy.h"

#include "core/kubeconfig/KubeConfigFiles.h"
#include "platform/settings/UserDefaults.h"

#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>

namespace tidewright {

namespace {

const auto policiesKey = QStringLiteral("contextPolicies");
const auto everyContext = QStringLiteral("*");
constexpr QLatin1Char lineFeed('\n');

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

/// The index of a word in a table, whatever its letters' case; -1 when it is not there.
template <std::size_t size> int indexIn(const std::array<QLatin1String, size> &words, const QString &word)
{
    const auto found = std::find_if(words.begin(), words.end(),
        [&word](QLatin1String known) { return word.compare(known, Qt::CaseInsensitive) == 0; });
    return found == words.end() ? -1 : static_cast<int>(found - words.begin());
}

/// What the settings hold. What is no text there, or no dictionary, becomes an entry that cannot be read.
UserDefaults::Dictionary storedPolicies()
{
    UserDefaults::Dictionary result;
    const QJsonValue stored = userDefaults().value(policiesKey);
    const bool isLost = stored.isUndefined() && userDefaults().hasLostValues();
    if (isLost || (!stored.isUndefined() && !stored.isObject())) {
        result.insert(everyContext, QString());
    }
    const QJsonObject entries = stored.toObject();
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        result.insert(entry.key(), entry.value().toString());
    }
    return result;
}

ContextPolicy policyIn(const UserDefaults::Dictionary &stored, const ContextKey &context)
{
    ContextPolicy policy{ContextAccess::Free, suggestedPolicy(context.name).colour};
    const ContextColour suggested = policy.colour;
    if (const auto own = stored.constFind(context.word()); own != stored.cend()) {
        return ContextPolicy::read(*own, suggested);
    }
    for (auto entry = stored.begin(); entry != stored.end(); ++entry) {
        const QString name = ContextKey::read(entry.key()).name;
        const ContextPolicy other = ContextPolicy::read(entry.value(), suggested);
        if ((name == context.name || name == everyContext) && other.access > policy.access) {
            policy = other;
        }
    }
    return policy;
}

} // namespace

const QList<ContextColour> &contextColours()
{
    static const QList<ContextColour> colours{ContextColour::None, ContextColour::Red, ContextColour::Amber,
        ContextColour::Green, ContextColour::Blue, ContextColour::Violet};
    return colours;
}

ContextKey::ContextKey(const QString &configPath, const QString &context)
    : name(context)
    , files(kubeConfigFiles(configPath))
{
}

QString ContextKey::word() const
{
    return files.isEmpty() ? name : name + lineFeed + files;
}

ContextKey ContextKey::read(const QString &word)
{
    ContextKey key;
    key.name = word.section(lineFeed, 0, 0);
    key.files = word.section(lineFeed, 1);
    return key;
}

QString ContextPolicy::word() const
{
    return accessWords.at(static_cast<std::size_t>(access)) + QLatin1Char(';')
        + colourWords.at(static_cast<std::size_t>(colour));
}

ContextPolicy ContextPolicy::read(const QString &word, ContextColour otherwise)
{
    const QStringList parts = word.split(QLatin1Char(';'));
    const int access = indexIn(accessWords, parts.first().trimmed());
    const int colour = parts.size() == 2 ? indexIn(colourWords, parts.last().trimmed())
                                         : contextColours().indexOf(otherwise);
    if (access < 0 || colour < 0 || parts.size() > 2) {
        return {ContextAccess::ReadOnly, otherwise, false};
    }
    return {static_cast<ContextAccess>(access), contextColours().at(colour)};
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
    if (has({"dev", "develop", "development", "test", "testing", "qa", "sandbox"})) {
        return {ContextAccess::Free, ContextColour::Green};
    }
    return {};
}

ContextPolicies &ContextPolicies::shared()
{
    static ContextPolicies policies;
    return policies;
}

ContextPolicy ContextPolicies::policy(const ContextKey &context)
{
    return policyIn(storedPolicies(), context);
}

QList<ContextKey> ContextPolicies::chosen()
{
    QList<ContextKey> result;
    const UserDefaults::Dictionary stored = storedPolicies();
    for (auto entry = stored.begin(); entry != stored.end(); ++entry) {
        result.append(ContextKey::read(entry.key()));
    }
    return result;
}

void ContextPolicies::keepWhatWasLost()
{
    if (userDefaults().hasLostValues()) {
        userDefaults().set(policiesKey, storedPolicies());
    }
}

void ContextPolicies::set(const ContextKey &context, const ContextPolicy &policy)
{
    UserDefaults::Dictionary stored = storedPolicies();
    stored.remove(context.word());
    if (policy != policyIn(stored, context)) {
        stored.insert(context.word(), policy.word());
    }
    userDefaults().set(policiesKey, stored);
    Q_EMIT changed();
}

} // namespace tidewright
