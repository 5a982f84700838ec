// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>

#include <string>

namespace zviptv::sim {

/// The reply with which a function refuses a request: the result 0 and, for every value, the one for "none".
/// For an unknown function, the reply contains only the result.
CMessageBuffer FailureReply(std::string const& endpoint, std::string const& function);

} // namespace zviptv::sim
