// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/BusProbe.h"
#include "doctor/Facts.h"

#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

/// Announces to the helper bus of `owner` that a channel of this connection is created ("y") or destroyed
/// ("n").
Reply Announce(BusProbe& bus, std::string const& owner, char const* type, char const* add);

/// Announces a channel of each type, like an application, and sends each endpoint a request that changes
/// nothing. At the end, all channels are withdrawn. It stops after a failed announcement and after the first
/// missing answer.
std::vector<EndpointFacts> ProbeEndpoints(BusProbe& bus, std::string const& owner);

} // namespace zviptv::ctl::doctor
