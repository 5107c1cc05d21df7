// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "api/ApiCall.h"

namespace tidewright::demo {

/// Changes of objects by POST, PUT, PATCH and DELETE. All throw ApiError and tell the cluster's movement what
/// was done, so that the consequences follow.
void createObject(const ApiCall &call);
void replaceObject(const ApiCall &call);
void patchObject(const ApiCall &call);
void deleteObject(const ApiCall &call);
void deleteCollection(const ApiCall &call);

} // namespace tidewright::demo
