// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ApiCall.h"

namespace tidewright::demo {

/// GET of one object or its scale, as itself or as a table. Throws ApiError.
void readObject(const ApiCall &call);

/// GET of a collection: selectors, pages, tables. Throws ApiError.
void readList(const ApiCall &call);

/// The filter that the call's selectors describe; empty when there are none.
ObjectStore::Filter filterOf(const ApiCall &call);

/// The Scale object of a deployment, replica set or stateful set.
json scaleOf(const StoredObject &object);

} // namespace tidewright::demo
