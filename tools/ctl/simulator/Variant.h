// SPDX-License-Identifier: MIT
#pragma once

#include "common/VariantJson.h"

#include <json/value.h>

#include <string>

namespace zviptv::ctl {

using zviptv::ToJson; // beside the overloads for the records

/// A D-Bus value as ToJson() shows it on one line, for people: "-" for what is empty.
std::string ToLine(Json::Value const& value);

} // namespace zviptv::ctl
