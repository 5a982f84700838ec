// SPDX-License-Identifier: MIT
#pragma once

#include "Fuzz.h"
#include "StreamTestSupport.h"

#include "stream/SectionAssembler.h"

#include <algorithm>

namespace zviptv::fuzz {

struct SentSection
{
    std::uint16_t pid = 0;
    test::Bytes bytes;
};

/// Sections of the fuzzer's making: whatever is in them, their lengths and check sums
/// are right, or nothing behind those would ever be reached. Every section is told by 16 bits with its size
/// and 8 that choose its PID among `pids`, from the end of the input; its bytes are at the beginning.
inline std::vector<SentSection> ConsumeSections(FuzzedDataProvider& input,
                                                std::vector<std::uint16_t> const& pids, std::size_t largest)
{
    constexpr std::size_t Head = 8; // of a section; the length in it is counted from its third byte on
    constexpr std::size_t Crc = 4;
    std::vector<SentSection> sections;
    while (input.remaining_bytes() > Head + 3) {
        std::size_t const size = input.ConsumeIntegral<std::uint16_t>() % (largest - Crc + 1);
        std::uint16_t const pid = pids[input.ConsumeIntegral<std::uint8_t>() % pids.size()];
        test::Bytes section = input.ConsumeBytes<std::uint8_t>(std::max(size, Head));
        section.resize(std::max(section.size(), Head));
        auto const extension = static_cast<std::uint16_t>(section[3] << 8 | section[4]);
        test::Bytes const body(section.begin() + Head, section.end());
        sections.push_back({pid, test::MakeSection(section[0], extension, (section[5] >> 1) & 0x1F, body,
                                                   section[6], section[7], (section[5] & 1) != 0)});
    }
    return sections;
}

/// In transport packets.
inline test::Bytes StreamOf(std::vector<SentSection> const& sections)
{
    test::StreamBuilder builder;
    for (SentSection const& section : sections) {
        builder.Section(section.pid, section.bytes);
    }
    return builder.Stream();
}

/// The sections of a PID that arrive.
inline std::vector<test::Bytes> Assemble(test::Bytes const& stream, std::uint16_t pid,
                                         sim::SectionRules const& rules)
{
    sim::SectionAssembler assembler(rules);
    std::vector<test::Bytes> arrived;
    test::ForEachPacket(stream, [&](TsPacket const& packet) {
        if (packet.pid == pid) {
            for (test::Bytes& section : assembler.Push(packet)) {
                arrived.push_back(std::move(section));
            }
        }
    });
    return arrived;
}

/// From packets of any kind only sound sections come.
inline void CheckSections(test::Bytes const& stream, std::uint16_t pid, sim::SectionRules const& rules)
{
    for (test::Bytes const& section : Assemble(stream, pid, rules)) {
        Require(sim::IsValidSection(section, rules), "a section is sound");
        Require(section.size() <= rules.largest && (!rules.numbersAreTight || section[6] <= section[7]),
                "and keeps the rules");
    }
}

/// Of what a sender sends in order, all that keeps the rules arrives byte for byte, and nothing else.
inline void CheckArrival(std::vector<SentSection> const& sent, test::Bytes const& stream, std::uint16_t pid,
                         sim::SectionRules const& rules)
{
    std::vector<test::Bytes> expected;
    for (SentSection const& section : sent) {
        bool const isNumbered = !rules.numbersAreTight || section.bytes[6] <= section.bytes[7];
        // Stuffing begins with the table id 0xFF.
        if (section.pid == pid && isNumbered && section.bytes[0] != 0xFF) {
            expected.push_back(section.bytes);
        }
    }
    Require(Assemble(stream, pid, rules) == expected, "sections arrive as they were sent");
}

} // namespace zviptv::fuzz
