// SPDX-License-Identifier: MIT
#pragma once

#include "mpegts/PesHeader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace zviptv::ctl {

/// The data of an elementary stream in a PMT.
struct StreamCoding
{
    std::uint8_t streamType = 0;
    std::vector<std::uint8_t> descriptors;
};

/// Determines the coding from a packet with this header: of video by its sequence header, of audio by its
/// frames, of others by `pesType`, an EZVPESType. Empty if the packet does not show it.
std::optional<StreamCoding> CodingOf(std::int32_t pesType, PesHeader const& header);

} // namespace zviptv::ctl
