// SPDX-License-Identifier: MIT
#include "stream/DvbText.h"

#include "stream/CharacterSet.h"

namespace zviptv::sim {

namespace {

struct Table
{
    std::string charset;    ///< name for iconv; empty for the default table
    std::size_t prefix = 0; ///< bytes that select the table
    std::size_t unit = 1;   ///< bytes of the smallest character
};

std::string Iso8859(unsigned part)
{
    return part >= 1 && part <= 16 && part != 12 ? "ISO-8859-" + std::to_string(part) : "ASCII";
}

Table FindTable(ByteView text)
{
    std::uint8_t const first = text[0];
    if (first >= 0x20) {
        return {};
    }
    switch (first) {
    case 0x10:
        return {Iso8859(text.U16(1)), 3};
    case 0x11:
    case 0x14: // the Big5 subset of ISO 10646
        return {"UTF-16BE", 1, 2};
    case 0x12:
        return {"EUC-KR", 1};
    case 0x13:
        return {"GB2312", 1};
    case 0x15:
        return {"UTF-8", 1};
    case 0x1F:
        return {"ASCII", 2};
    default:
        return {first >= 0x01 && first <= 0x0B ? Iso8859(first + 4u) : "ASCII", 1};
    }
}

/// The ISO 6937 variant of DVB: iconv's table has no euro sign, and the Icelandic letter instead of the D
/// with stroke.
std::u32string DecodeDefault(std::string const& bytes)
{
    constexpr char Euro = '\xA4';
    constexpr char Others[] = {Euro, '\xE2', '\0'};
    std::u32string result;
    for (std::size_t begin = 0, end = 0; begin <= bytes.size(); begin = end + 1) {
        end = std::min(bytes.find_first_of(Others, begin), bytes.size());
        result += ToUnicode("ISO_6937", bytes.substr(begin, end - begin));
        if (end < bytes.size()) {
            result += bytes[end] == Euro ? U'€' : U'Đ';
        }
    }
    return result;
}

/// For the tables whose characters have one or two bytes; iconv does not know the controls in all of them.
std::string DropControls(ByteView text)
{
    std::string result;
    for (std::uint8_t const byte : text) {
        if (byte < 0x80 || byte > 0x9F) {
            result += static_cast<char>(byte);
        } else if (byte == 0x8A) {
            result += ' ';
        }
    }
    return result;
}

std::u32string Decode(ByteView text)
{
    Table const table = FindTable(text);
    ByteView const body = text.Part(table.prefix);
    if (table.prefix == 0) {
        return DecodeDefault(DropControls(body));
    }
    bool const isUnicode = table.charset.compare(0, 3, "UTF") == 0;
    std::string const bytes = isUnicode ? std::string(body.begin(), body.end()) : DropControls(body);
    return ToUnicode(table.charset.c_str(), bytes, table.unit);
}

/// Adds the character as UTF-8; leaves out controls, and adds a blank for a line break.
void Append(std::string& text, char32_t character)
{
    char32_t const block = character & ~0x1Fu;
    if (character == 0x8A || character == 0xE08A) {
        text += ' ';
    } else if (block != 0 && character != 0x7F && block != 0x80 && block != 0xE080) {
        constexpr char32_t Leads[] = {0, 0xC0, 0xE0, 0xF0};
        unsigned const more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        text += static_cast<char>(Leads[more] | (character >> (6 * more)));
        for (unsigned i = more; i > 0; --i) {
            text += static_cast<char>(0x80 | ((character >> (6 * (i - 1))) & 0x3F));
        }
    }
}

} // namespace

std::string DecodeDvbText(ByteView text)
{
    std::string result;
    for (char32_t const character : Decode(text)) {
        Append(result, character);
    }
    return result;
}

} // namespace zviptv::sim
