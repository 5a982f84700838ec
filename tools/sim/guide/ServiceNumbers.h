// SPDX-License-Identifier: MIT
#pragma once

#include "guide/GuideProblems.h"

#include <map>
#include <string>

namespace zviptv::sim {

struct GuideChannel
{
    std::string id;
    std::vector<std::string> names; ///< display-names
};

/// Service ids by the name of the service, as the stream has them.
using ServiceNames = std::map<std::string, std::uint64_t>;

/// A service id for every channel, all different. Rule after rule over all channels in file order:
/// a display-name that `names` has; the channel id's leading decimal number, where the id ends or '.'
/// follows; a display-name that is a decimal number; the next free number, counting from 1. A number that
/// another channel has already is a warning, and the next rule decides.
std::vector<std::uint64_t> AssignServiceNumbers(std::vector<GuideChannel> const& channels,
                                                ServiceNames const& names, GuideWarnings& warnings);

} // namespace zviptv::sim
