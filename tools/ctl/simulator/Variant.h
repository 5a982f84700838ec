// SPDX-License-Identifier: MIT
#pragma once

#include "common/VariantJson.h"

#include <json/value.h>

#include <string>

namespace zviptv::ctl {

using zviptv::ToJson; // in addition to the overloads for the records

/// A D-Bus value on one line for people, like ToJson(), but "-" for an empty value.
std::string ToLine(Json::Value const& value);

} // namespace zviptv::ctl
