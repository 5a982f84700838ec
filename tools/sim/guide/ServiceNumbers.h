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

/// Service ids by the name of the service, from the stream.
using ServiceNames = std::map<std::string, std::uint64_t>;

/// Assigns a different service id to every channel. Each rule is applied to all channels in file order before
/// the next one: a display-name in `names`; the leading decimal number of the channel id, if the id ends or
/// '.' follows; a display-name that is a decimal number; the next free number, counting from 1. If another
/// channel already has the number, there is a warning, and the next rule decides.
std::vector<std::uint64_t> AssignServiceNumbers(std::vector<GuideChannel> const& channels,
                                                ServiceNames const& names, GuideWarnings& warnings);

} // namespace zviptv::sim
