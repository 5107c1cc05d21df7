// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/Access.h"

#include <QByteArrayView>
#include <QStringList>

#include <optional>
#include <vector>

namespace tidewright {

/// What a user may do in one namespace, as `kubectl auth can-i --list` prints it: a table with the columns
/// Resources ("pods", "deployments.apps/scale", "*.*"), Non-Resource URLs, Resource Names ("[]" for all) and
/// Verbs ("[get list]"). Whatever no rule allows is not allowed. Any thread.
class AccessRules
{
public:
    /// Nothing when the table has a line that cannot be read, or none: then what is missing is not known.
    static std::optional<AccessRules> read(QByteArrayView printed);

    /// Without a name, whether there may be an object that it is allowed for.
    bool mayDo(const Access &access) const;

private:
    struct Rule
    {
        QString group;
        QString resource;
        QString subresource;
        QStringList names; ///< empty: of all objects
        QStringList verbs;

        bool concerns(const Access &access) const;
    };

    std::vector<Rule> m_rules;
};

} // namespace tidewright
