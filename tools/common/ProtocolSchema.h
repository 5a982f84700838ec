// SPDX-License-Identifier: MIT
#pragma once

#include <json/value.h>

namespace zviptv {

/// The description of the protocol, as `zviptvctl methods --json` prints it. Any thread.
Json::Value const& ProtocolSchema();

} // namespace zviptv
