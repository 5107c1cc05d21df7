// SPDX-License-Identifier: GPL-3.0-or-later
#include "resources/listing/AccessRules.h"

#include "resources/kinds/PrintedTable.h"

#include <algorithm>

namespace tidewright {

namespace {

constexpr QLatin1String any("*");

/// "[get list]", as Go prints a list; nothing when it is none.
std::optional<QStringList> wordsOf(QByteArrayView cell)
{
    if (!cell.startsWith('[') || !cell.endsWith(']') || cell.size() < 2) {
        return std::nullopt;
    }
    return QString::fromUtf8(cell.sliced(1).chopped(1)).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// Groups in which everybody may ask what he may do: that makes no objects.
bool isAboutAccess(const QString &group)
{
    return group == QLatin1String("authorization.k8s.io") || group == QLatin1String("authentication.k8s.io");
}

} // namespace

std::optional<AccessRules> AccessRules::read(QByteArrayView printed)
{
    const PrintedTable table = PrintedTable::parse(printed);
    const auto resource = table.titles.indexOf(QLatin1String("Resources"));
    const auto names = table.titles.indexOf(QLatin1String("Resource Names"));
    const auto verbs = table.titles.indexOf(QLatin1String("Verbs"));
    if (resource < 0 || names < 0 || verbs < 0 || table.lines.empty()) {
        return std::nullopt;
    }
    AccessRules rules;
    for (const auto &[cells, text] : table.lines) {
        if (cells.empty()) {
            return std::nullopt;
        }
        const QString what = QString::fromUtf8(cells[std::size_t(resource)]);
        const auto named = wordsOf(cells[std::size_t(names)]);
        const auto allowed = wordsOf(cells[std::size_t(verbs)]);
        if (!named || !allowed) {
            return std::nullopt;
        }
        if (!what.isEmpty()) { // else it is about paths
            const QString kind = what.section(QLatin1Char('/'), 0, 0);
            rules.m_rules.push_back({kind.section(QLatin1Char('.'), 1), kind.section(QLatin1Char('.'), 0, 0),
                what.section(QLatin1Char('/'), 1), *named, *allowed});
        }
    }
    return rules;
}

bool AccessRules::Rule::concerns(const Access &access) const
{
    if (!verbs.contains(access.verb) && !verbs.contains(any)) {
        return false;
    }
    if (access.resource.isEmpty()) {
        return !isAboutAccess(group);
    }
    if (group != access.group && group != any) {
        return false;
    }
    if (!names.isEmpty() && !access.name.isEmpty() && !names.contains(access.name)) {
        return false;
    }
    if (resource == any && subresource.isEmpty()) {
        return true; // parts of the objects too
    }
    return (resource == access.resource || resource == any)
        && (subresource == access.subresource || subresource == any);
}

bool AccessRules::mayDo(const Access &access) const
{
    return std::any_of(
        m_rules.begin(), m_rules.end(), [&](const Rule &rule) { return rule.concerns(access); });
}

} // namespace tidewright
