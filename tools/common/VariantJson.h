// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <json/value.h>

namespace zviptv {

/// A D-Bus value as JSON: dictionaries with texts as keys are objects, other containers arrays.
Json::Value ToJson(GVariant* value);

} // namespace zviptv
