// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <optional>
#include <string>

namespace zviptv::sim {

/// One descriptor of a table, as sent.
struct Descriptor
{
    std::uint8_t tag = 0;
    std::vector<std::uint8_t> data; ///< the bytes after the length byte
};

/// Descriptor tags of ISO/IEC 13818-1, EN 300 468 and ARIB STD-B10.
namespace tag {
constexpr std::uint8_t Registration = 0x05;
constexpr std::uint8_t Iso639Language = 0x0A;
constexpr std::uint8_t VbiTeletext = 0x46;
constexpr std::uint8_t Service = 0x48;
constexpr std::uint8_t StreamIdentifier = 0x52;
constexpr std::uint8_t Teletext = 0x56;
constexpr std::uint8_t Subtitling = 0x59;
constexpr std::uint8_t Ac3 = 0x6A;
constexpr std::uint8_t EnhancedAc3 = 0x7A;
constexpr std::uint8_t Dts = 0x7B;
constexpr std::uint8_t Aac = 0x7C;
constexpr std::uint8_t Extension = 0x7F;
constexpr std::uint8_t DataComponent = 0xFD;
} // namespace tag

/// Languages are three printable characters of ISO 639-2; all other bytes become '?'.
struct LanguageEntry
{
    std::string language;
    std::uint8_t audioType = 0; ///< 0 undefined, 1 clean effects, 2 hearing impaired, 3 visually impaired
};

struct TeletextPage
{
    std::string language;
    std::uint8_t type = 0;     ///< 1 initial page, 2 subtitles, 3 additional, 4 schedule, 5 hearing impaired
    std::uint8_t magazine = 1; ///< 1 to 8
    std::uint8_t page = 0;     ///< two digits, one in each half: 0x88 is page 88
};

struct SubtitlePage
{
    std::string language;
    std::uint8_t type = 0; ///< 0x10 to 0x15 normal, 0x20 to 0x25 hearing impaired
    std::uint16_t compositionPage = 0;
    std::uint16_t ancillaryPage = 0;
};

/// The descriptors of a list, up to one that exceeds the list.
std::vector<Descriptor> ParseDescriptors(ByteView list);

/// The complete entries of the descriptor; an incomplete one at the end is left out.
std::vector<LanguageEntry> ParseLanguages(ByteView data);
std::vector<TeletextPage> ParseTeletextPages(ByteView data);
std::vector<SubtitlePage> ParseSubtitlePages(ByteView data);

/// The language of a supplementary audio descriptor (an extension descriptor), if it has one.
std::optional<std::string> ParseSupplementaryAudioLanguage(ByteView data);

} // namespace zviptv::sim
