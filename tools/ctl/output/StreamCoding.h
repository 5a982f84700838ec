// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/PesHeader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zviptv::ctl {

/// How a PMT announces an elementary stream.
struct StreamCoding
{
    std::uint8_t streamType = 0;
    std::vector<std::uint8_t> descriptors;
};

/// Finds out the coding from a packet with this header: video by its sequence header, audio by its frames,
/// the rest by `pesType`, an EZVPESType. Empty if the packet does not show it.
std::optional<StreamCoding> CodingOf(std::int32_t pesType, PesHeader const& header);

} // namespace zviptv::ctl
