// SPDX-License-Identifier: MIT
#include "stream/AribLanguages.h"

#include "mpegts/PesHeader.h"
#include "stream/BitReader.h"

namespace zviptv::sim {

namespace {

constexpr std::size_t GroupHead = 5; // id and version, two link numbers, size

/// The data group in a PES packet of captions or superimposed text, from its head on.
ByteView GroupOf(ByteView pes)
{
    constexpr std::uint8_t Caption = 0x80;
    constexpr std::uint8_t Superimpose = 0x81;
    auto const header = ParsePesHeader(pes);
    if (!header) {
        return {};
    }
    ByteView const data = header->payload;
    if (data[0] != Caption && data[0] != Superimpose) {
        return {};
    }
    return data.Part(std::size_t{3} + (data[2] & 0x0F));
}

bool IsManagement(ByteView group)
{
    constexpr std::uint8_t GroupA = 0x00; // the two groups take turns
    constexpr std::uint8_t GroupB = 0x20;
    std::uint8_t const id = group[0] >> 2;
    return group.Size() > GroupHead && (id == GroupA || id == GroupB);
}

AribLanguage ReadLanguage(BitReader& bits)
{
    constexpr std::uint32_t FirstConditional = 0x0C; // display modes followed by their condition
    constexpr std::uint32_t LastConditional = 0x0E;
    AribLanguage language;
    language.tag = static_cast<std::uint8_t>(bits.Bits(3));
    bits.Skip(1);
    std::uint32_t const mode = bits.Bits(4);
    if (mode >= FirstConditional && mode <= LastConditional) {
        bits.Skip(8);
    }
    for (int i = 0; i < 3; ++i) {
        language.language += static_cast<char>(bits.Bits(8));
    }
    bits.Skip(8); // format, coding, roll-up
    return language;
}

} // namespace

std::optional<std::vector<AribLanguage>> ParseAribLanguages(ByteView pes)
{
    ByteView const group = GroupOf(pes);
    if (!IsManagement(group)) {
        return std::nullopt;
    }
    BitReader bits(group.Part(GroupHead, group.U16(3)));
    constexpr std::uint32_t OffsetTime = 2;
    std::uint32_t const timeMode = bits.Bits(2);
    bits.Skip(6);
    if (timeMode == OffsetTime) {
        bits.Skip(40);
    }
    std::uint32_t const count = bits.Bits(8);
    std::vector<AribLanguage> languages;
    for (std::uint32_t i = 0; i < count && bits.Ok(); ++i) {
        languages.push_back(ReadLanguage(bits));
    }
    return bits.Ok() ? std::optional(std::move(languages)) : std::nullopt;
}

} // namespace zviptv::sim
