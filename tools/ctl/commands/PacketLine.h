// SPDX-License-Identifier: MIT
#pragma once

#include "session/Subscription.h"

#include <string>

namespace zviptv::ctl {

/// "audio pid=0x0101 pts=133200 size=2048", or a JSON object; with line break.
std::string PacketLine(Packet const& packet, bool asJson);

} // namespace zviptv::ctl
