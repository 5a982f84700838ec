// SPDX-License-Identifier: MIT
#include "stream/Descriptors.h"

namespace zviptv::sim {

namespace {

bool IsPrintable(std::uint8_t byte)
{
    return byte >= 0x20 && byte < 0x7F;
}

std::string ParseLanguage(ByteView data)
{
    std::string code;
    for (std::size_t i = 0; i < 3; ++i) {
        code += IsPrintable(data[i]) ? static_cast<char>(data[i]) : '?';
    }
    return code;
}

/// Splits a descriptor into entries of equal size.
template <typename Entry, typename Parse>
std::vector<Entry> ParseEntries(ByteView data, std::size_t entrySize, Parse parse)
{
    std::vector<Entry> entries;
    for (std::size_t at = 0; at + entrySize <= data.Size(); at += entrySize) {
        entries.push_back(parse(data.Part(at, entrySize)));
    }
    return entries;
}

} // namespace

std::vector<Descriptor> ParseDescriptors(ByteView list)
{
    std::vector<Descriptor> descriptors;
    while (list.Size() >= 2 && list.Size() - 2 >= list[1]) {
        descriptors.push_back({list[0], list.Part(2, list[1]).Copy()});
        list = list.Part(2 + std::size_t{list[1]});
    }
    return descriptors;
}

std::vector<LanguageEntry> ParseLanguages(ByteView data)
{
    return ParseEntries<LanguageEntry>(data, 4, [](ByteView entry) {
        return LanguageEntry{ParseLanguage(entry), entry[3]};
    });
}

std::vector<TeletextPage> ParseTeletextPages(ByteView data)
{
    return ParseEntries<TeletextPage>(data, 5, [](ByteView entry) {
        std::uint8_t const magazine = entry[3] & 0x07;
        return TeletextPage{ParseLanguage(entry), static_cast<std::uint8_t>(entry[3] >> 3),
                            magazine == 0 ? std::uint8_t{8} : magazine, entry[4]};
    });
}

std::vector<SubtitlePage> ParseSubtitlePages(ByteView data)
{
    return ParseEntries<SubtitlePage>(data, 8, [](ByteView entry) {
        return SubtitlePage{ParseLanguage(entry), entry[3], entry.U16(4), entry.U16(6)};
    });
}

std::optional<std::string> ParseSupplementaryAudioLanguage(ByteView data)
{
    constexpr std::uint8_t SupplementaryAudio = 0x06;
    bool const named = data[0] == SupplementaryAudio && (data[1] & 0x01) && data.Size() >= 5;
    return named ? std::optional<std::string>(ParseLanguage(data.Part(2))) : std::nullopt;
}

} // namespace zviptv::sim
