// SPDX-License-Identifier: MIT
#pragma once

#include "StreamTestSupport.h"

namespace zviptv::test {

constexpr std::uint16_t Pmt = 0x1000;
constexpr std::uint16_t Video = 0x100;
constexpr std::uint16_t Audio = 0x101;
constexpr std::uint16_t Subtitle = 0x102;

/// Video, English audio and English subtitles.
inline std::vector<PmtStream> Streams()
{
    return {{0x1B, Video, {}},
            {0x03, Audio, {0x0A, 4, 'e', 'n', 'g', 0}},
            {0x06, Subtitle, {0x59, 8, 'e', 'n', 'g', 0x10, 0, 1, 0, 1}}};
}

/// Two packets: the PAT, and the PMT of programme 1.
inline StreamBuilder& AddTables(StreamBuilder& builder, std::uint16_t pcrPid = Video)
{
    return builder.Section(0x0000, MakePat({{1, Pmt}})).Section(Pmt, MakePmt(1, pcrPid, Streams()));
}

} // namespace zviptv::test
