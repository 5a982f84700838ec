// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/BusProbe.h"
#include "doctor/Facts.h"

#include <string>
#include <vector>

namespace zviptv::ctl::doctor {

/// Announces to the helper bus of `owner` that a channel of this connection comes ("y") or goes ("n").
Reply Announce(BusProbe& bus, std::string const& owner, char const* type, char const* add);

/// Announces a channel of each type, as an application does, and sends each endpoint a request that changes
/// nothing. All channels have gone again at the end. It ends after an announcement that fails and after the
/// first silence.
std::vector<EndpointFacts> ProbeEndpoints(BusProbe& bus, std::string const& owner);

} // namespace zviptv::ctl::doctor
