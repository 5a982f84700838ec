// SPDX-License-Identifier: MIT
#include "mpegts/AribCaptions.h"

#include "mpegts/PesHeader.h"

namespace zviptv {

namespace {

constexpr std::size_t FieldHead = 3; // data identifier, private stream id, size of what follows
constexpr std::size_t GroupHead = 5; // id and version, two link numbers, size

/// The data after the time control mode and its time.
ByteView AfterTime(AribGroup const& group)
{
    constexpr unsigned FreeTime = 0;
    constexpr unsigned OffsetTime = 2;
    constexpr std::size_t TimeSize = 5;
    unsigned const mode = group.data[0] >> 6;
    bool const isManagement = group.number == 0;
    bool const hasTime = isManagement ? mode == OffsetTime : mode != FreeTime && mode <= OffsetTime;
    return group.data.Part(hasTime ? 1 + TimeSize : 1);
}

} // namespace

std::optional<AribGroup> ParseAribGroup(ByteView field)
{
    constexpr std::uint8_t Caption = 0x80;
    constexpr std::uint8_t Superimpose = 0x81;
    constexpr unsigned OtherGroup = 0x20; // the two groups take turns
    if (field[0] != Caption && field[0] != Superimpose) {
        return std::nullopt;
    }
    ByteView const group = field.Part(FieldHead + (field[2] & 0x0F));
    if (group.Size() <= GroupHead) {
        return std::nullopt;
    }
    unsigned const id = group[0] >> 2;
    return AribGroup{field[0] == Superimpose, id & ~OtherGroup, group.Part(GroupHead, group.U16(3))};
}

std::optional<std::vector<AribLanguage>> AribLanguagesOf(AribGroup const& group)
{
    constexpr unsigned FirstConditional = 0x0C; // display modes followed by their condition
    constexpr unsigned LastConditional = 0x0E;
    constexpr std::size_t LanguageSize = 5;
    if (group.number != 0) {
        return std::nullopt;
    }
    ByteView rest = AfterTime(group);
    unsigned const count = rest[0];
    bool isWhole = !rest.Empty();
    rest = rest.Part(1);
    std::vector<AribLanguage> languages;
    for (unsigned i = 0; i < count && isWhole; ++i) {
        unsigned const mode = rest[0] & 0x0F;
        bool const isConditional = mode >= FirstConditional && mode <= LastConditional;
        ByteView const name = rest.Part(isConditional ? 2 : 1, 3);
        languages.push_back({static_cast<std::uint8_t>(rest[0] >> 5), std::string(name.begin(), name.end())});
        std::size_t const size = LanguageSize + (isConditional ? 1 : 0);
        isWhole = rest.Size() >= size;
        rest = rest.Part(size);
    }
    return isWhole ? std::optional(std::move(languages)) : std::nullopt;
}

std::optional<std::vector<AribLanguage>> ParseAribLanguages(ByteView pes)
{
    auto const header = ParsePesHeader(pes);
    auto const group = header ? ParseAribGroup(header->payload) : std::nullopt;
    return group ? AribLanguagesOf(*group) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>> AribStatement(AribGroup const& group)
{
    constexpr std::size_t LoopHead = 3;
    constexpr std::size_t UnitHead = 5; // separator, kind, size
    constexpr std::uint8_t Separator = 0x1F;
    constexpr std::uint8_t StatementBody = 0x20;
    if (group.number == 0) {
        return std::nullopt;
    }
    ByteView const loop = AfterTime(group);
    ByteView rest = loop.Part(LoopHead, loop.U32(0) >> 8);
    std::optional<std::vector<std::uint8_t>> text;
    while (rest.Size() >= UnitHead && rest[0] == Separator) {
        std::size_t const size = rest.U32(1) & 0xFFFFFF;
        if (size > rest.Size() - UnitHead) {
            break;
        }
        if (rest[1] == StatementBody) {
            ByteView const body = rest.Part(UnitHead, size);
            text = text ? std::move(text) : std::vector<std::uint8_t>();
            text->insert(text->end(), body.begin(), body.end());
        }
        rest = rest.Part(UnitHead + size);
    }
    return text;
}

} // namespace zviptv
