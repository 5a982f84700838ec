// SPDX-License-Identifier: MIT
#pragma once

#include "StreamBuilder.h"

namespace zviptv::test {

/// One teletext row, as its page shows it.
struct TeletextRow
{
    unsigned page = 0; ///< 0x100 to 0x8FF
    unsigned row = 0;  ///< 0 is the header
    std::string text;  ///< UTF-8, without control characters and the blanks around
};

bool operator==(TeletextRow const& left, TeletextRow const& right);

/// The rows in a teletext data field without its data identifier, or in any of its units in a row.
/// @throws std::runtime_error at a wrong length, parity or framing code
std::vector<TeletextRow> ReadTeletext(Bytes const& units);

/// Group number and body of the one data group of an ARIB caption, from its data identifier on.
/// @throws std::runtime_error at a wrong length or check sum
std::pair<unsigned, Bytes> ReadAribGroup(Bytes const& field);

/// The payload of a PES packet.
Bytes PesPayload(Bytes const& pes);

} // namespace zviptv::test
