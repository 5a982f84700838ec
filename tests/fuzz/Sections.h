#pragma once

#include "Fuzz.h"
#include "StreamBuilder.h"

#include <algorithm>

namespace zviptv::fuzz {

/// Transport packets with sections of the fuzzer's making: whatever is in them, their lengths and check sums
/// are right, or nothing behind those would ever be reached. Every section is told by 16 bits with its size
/// and 8 that choose its PID among `pids`, from the end of the input; its bytes are at the beginning.
inline test::Bytes ConsumeSections(FuzzedDataProvider& input, std::vector<std::uint16_t> const& pids,
                                   std::size_t largest)
{
    constexpr std::size_t Head = 8; // of a section; the length in it is counted from its third byte on
    constexpr std::size_t Crc = 4;
    test::StreamBuilder builder;
    while (input.remaining_bytes() > Head + 3) {
        std::size_t const size = input.ConsumeIntegral<std::uint16_t>() % (largest - Crc + 1);
        std::uint16_t const pid = pids[input.ConsumeIntegral<std::uint8_t>() % pids.size()];
        test::Bytes section = input.ConsumeBytes<std::uint8_t>(std::max(size, Head));
        section.resize(std::max(section.size(), Head));
        auto const extension = static_cast<std::uint16_t>(section[3] << 8 | section[4]);
        test::Bytes const body(section.begin() + Head, section.end());
        builder.Section(pid, test::MakeSection(section[0], extension, (section[5] >> 1) & 0x1F, body,
                                               section[6], section[7], (section[5] & 1) != 0));
    }
    return builder.Stream();
}

} // namespace zviptv::fuzz
