// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

#include <string>
#include <vector>

namespace tidewright::demo {

/// A parsed labelSelector or fieldSelector of a list or watch: a conjunction of requirements. Parsing throws
/// ApiError (400) when the text is not a selector.
class Selector
{
public:
    static Selector ofLabels(const std::string &text);
    /// Only fields that a real server knows for the kind.
    static Selector ofFields(const ResourceType &type, const std::string &text);

    bool isEmpty() const { return m_requirements.empty(); }
    bool matches(const StoredObject &object) const;

    /// Whether all pairs of a map such as a service's spec.selector are among the object's labels.
    static bool mapMatches(const json &wanted, const StoredObject &object);

private:
    enum class Operator { Equals, NotEquals, In, NotIn, Exists, Missing };
    struct Requirement
    {
        std::string key;
        Operator op = Operator::Equals;
        std::vector<std::string> values;
    };

    static Requirement parseRequirement(const std::string &text);
    bool holds(const Requirement &requirement, const StoredObject &object, json &parsed) const;

    std::vector<Requirement> m_requirements;
    bool m_onFields = false;
};

} // namespace tidewright::demo
