#pragma once

#include <string>
#include <vector>

namespace zviptv::sim {

/// Every function that the service answers, by its "functionname".
std::vector<std::string> ServiceFunctions();

} // namespace zviptv::sim
