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
    for (std::size_t i = 0; i < 3; ++i)
        code += IsPrintable(data[i]) ? static_cast<char>(data[i]) : '?';
    return code;
}

/// Cuts a descriptor into entries of equal size.
template <typename Entry, typename Parse>
std::vector<Entry> ParseEntries(ByteView data, std::size_t entrySize, Parse parse)
{
    std::vector<Entry> entries;
    for (std::size_t at = 0; at + entrySize <= data.Size(); at += entrySize)
        entries.push_back(parse(data.Part(at, entrySize)));
    return entries;
}

void AppendLatin1(std::string& text, std::uint8_t byte)
{
    text += static_cast<char>(0xC0 | (byte >> 6));
    text += static_cast<char>(0x80 | (byte & 0x3F));
}

/// Bytes of the UTF-8 character at the start; 0 if there is none.
std::size_t Utf8Length(ByteView text)
{
    std::uint8_t const lead = text[0];
    std::size_t const size = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (size == 0 || lead > 0xF4 || size > text.Size())
        return 0;
    for (std::size_t i = 1; i < size; ++i)
        if ((text[i] & 0xC0) != 0x80)
            return 0;
    bool const overlong = (lead == 0xE0 && text[1] < 0xA0) || (lead == 0xF0 && text[1] < 0x90);
    bool const invalid = (lead == 0xED && text[1] > 0x9F) || (lead == 0xF4 && text[1] > 0x8F);
    return overlong || invalid ? 0 : size;
}

std::string FilterUtf8(ByteView text)
{
    std::string result;
    while (!text.Empty()) {
        std::size_t const size = Utf8Length(text);
        if (size == 1 ? IsPrintable(text[0]) : size > 1)
            result.append(text.begin(), text.begin() + size);
        else if (size == 0)
            result += '?';
        text = text.Part(std::max<std::size_t>(size, 1));
    }
    return result;
}

} // namespace

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

std::string ParseDvbText(ByteView text)
{
    if (text[0] == 0x15)
        return FilterUtf8(text.Part(1));
    bool const latin1 = text[0] == 0x10 && text.U16(1) == 1;
    std::size_t const prefix = text[0] == 0x10 ? 3 : text[0] == 0x1F ? 2 : text[0] < 0x20 ? 1 : 0;
    std::string result;
    for (std::uint8_t const byte : text.Part(prefix)) {
        if (IsPrintable(byte))
            result += static_cast<char>(byte);
        else if (byte >= 0xA0 && latin1)
            AppendLatin1(result, byte);
        else if (byte >= 0xA0)
            result += '?';
    }
    return result;
}

} // namespace zviptv::sim
