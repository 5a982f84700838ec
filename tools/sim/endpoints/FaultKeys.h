// SPDX-License-Identifier: MIT
#pragma once

#include "FaultRule.h"

#include <string>
#include <vector>

namespace zviptv::sim {

/// The keys of the messages of the rule's target and function, by the description of the protocol, in its
/// order. Of all requests those of every answer.
std::vector<std::string> FaultKeys(FaultRule const& rule);

} // namespace zviptv::sim
