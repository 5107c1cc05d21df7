// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "store/ObjectStore.h"

#include <functional>
#include <string>
#include <vector>

namespace tidewright::demo {

/// A column of the tables that the server prints, behind the one with the name.
struct TableColumn
{
    std::string title;
    std::function<json(const json &object)> cell;
    int priority = 0; ///< above 0: in wide tables alone
};

#define CELL(expression) [](const json &o) -> json { return expression; }

json text(const json &object, const std::string &pointer, const std::string &missing = "<none>");
json age(const json &object);
/// The items of a list, or what is at a pointer in each of them.
std::string joined(const json &list, const std::string &pointer, const char *separator = ",");

/// Of nodes, namespaces, claims, and what is in none of the older groups; for other kinds the creation time.
const std::vector<TableColumn> &clusterColumns(const std::string &kind);

/// As the custom resource definition of the kind has them: paths of fields without filters.
std::vector<TableColumn> definedColumns(const ObjectStore &store, const ResourceType &type);

} // namespace tidewright::demo
