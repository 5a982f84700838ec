// SPDX-License-Identifier: MIT
#pragma once

#include "FaultRule.h"

#include <string>
#include <vector>

namespace zviptv::sim {

/// The keys of the messages of the rule's target and function, in the order of the description of the
/// protocol. For all requests, the keys of all answers.
std::vector<std::string> FaultKeys(FaultRule const& rule);

} // namespace zviptv::sim
