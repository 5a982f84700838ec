// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <json/value.h>

#include <string>

namespace zviptv::ctl {

/// A D-Bus value as JSON: dictionaries with texts as keys are objects, other containers arrays.
Json::Value ToJson(GVariant* value);

/// A member of ToJson()'s objects on one line, for people: "-" for what is empty.
std::string ToLine(Json::Value const& value);

} // namespace zviptv::ctl
