// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>

#include <string>
#include <vector>

namespace zviptv::sim {

/// The differences between a request to the endpoint of this type word and the description of the protocol:
/// an unknown function, a missing, unexpected or repeated key, a malformed value. Empty if there are none.
std::vector<std::string> WarningsOf(std::string const& endpoint, CMessageBuffer const& request);

/// The "functionname" of every function, in the order of the endpoints.
std::vector<std::string> DescribedFunctions();

} // namespace zviptv::sim
