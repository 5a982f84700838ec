// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace zviptv {

/// A teletext packet without its clock run-in and framing code, bits in the order of ETS 300 706.
using TeletextPacket = std::array<std::uint8_t, 42>;

/// The packets in a data field of EN 300 472, with or without its data identifier.
std::vector<TeletextPacket> TeletextPacketsIn(ByteView field);

/// Magazine and row of a packet.
struct TeletextAddress
{
    unsigned magazine = 0; ///< 1 to 8
    unsigned row = 0;      ///< 0 to 31; 0 is a page header
};

/// Nothing if there are more wrong bits than the code corrects.
std::optional<TeletextAddress> ReadAddress(TeletextPacket const& packet);

/// The content of a page header.
struct TeletextHeader
{
    unsigned page = 0;       ///< number, 100 to 899; 0 for a page with a hexadecimal digit
    unsigned subcode = 0;    ///< 13 bits
    bool isSubtitle = false; ///< C6
    bool isSerial = false;   ///< C11: it ends the pages of all magazines
};

/// Nothing if it is damaged.
std::optional<TeletextHeader> ReadHeader(TeletextPacket const& packet, unsigned magazine);

/// Gives the page of this header the subcode 0; with `erases`, the previous content is erased.
void MakeOnlySubpage(TeletextPacket& header, bool erases);

/// A header that ends the present page of its magazine and starts no other page.
TeletextPacket FillingHeader(unsigned magazine);

} // namespace zviptv
