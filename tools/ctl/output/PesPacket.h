// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace zviptv::ctl {

/// The header of a PES packet. Time stamps have 33 bits and count 1/90000 s.
struct PesHeader
{
    std::uint8_t streamId = 0;
    std::size_t payload = 0; ///< offset of the payload
    std::size_t end = 0;     ///< offset of the end of the payload
    std::optional<std::uint64_t> pts;
    std::optional<std::uint64_t> dts; ///< as the PTS if the packet has only that
};

/// Empty if the bytes are not a PES packet.
std::optional<PesHeader> ReadPesHeader(std::vector<std::uint8_t> const& packet);

} // namespace zviptv::ctl
