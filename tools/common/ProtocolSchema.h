// SPDX-License-Identifier: MIT
#pragma once

#include <json/value.h>

#include <string>

namespace zviptv {

/// The description of the protocol, as `zviptvctl methods --json` prints it. Any thread.
Json::Value const& ProtocolSchema();

/// The entry of a list of the description whose member `name` is this text; null if there is none. Any
/// thread.
Json::Value const& FindEntry(Json::Value const& list, char const* name, std::string const& text);

} // namespace zviptv
