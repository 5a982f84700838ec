#include "guide/DvbText.h"

#include "guide/CharacterSet.h"
#include "stream/Descriptors.h"

namespace zviptv::sim {

namespace {

struct Table
{
    std::string charset; ///< empty: left to ParseDvbText()
    std::size_t prefix = 0;
    bool oneByte = true;
};

std::string Iso8859(unsigned part)
{
    return part >= 1 && part <= 16 && part != 12 ? "ISO-8859-" + std::to_string(part) : std::string();
}

Table FindTable(ByteView text)
{
    std::uint8_t const first = text[0];
    if (first >= 0x20)
        return {"ISO_6937", 0};
    if (first >= 0x01 && first <= 0x0B)
        return {Iso8859(first + 4u), 1};
    switch (first) {
    case 0x10:
        return {Iso8859(text.U16(1)), 3};
    case 0x11:
        return {"UTF-16BE", 1, false};
    case 0x12:
        return {"EUC-KR", 1, false};
    case 0x13:
        return {"GB2312", 1, false};
    case 0x14:
        return {"UTF-16BE", 1, false}; // the Big5 subset of ISO 10646
    default:
        return {};
    }
}

/// Codes 0x80 to 0x9F control the display: 0x8A is a line break.
std::string DropControls(ByteView text)
{
    std::string result;
    for (std::uint8_t const byte : text)
        if (byte == 0x8A)
            result += ' ';
        else if (byte < 0x80 || byte > 0x9F)
            result += static_cast<char>(byte);
    return result;
}

} // namespace

std::string DecodeDvbText(ByteView text)
{
    if (text.Empty())
        return {};
    Table const table = FindTable(text);
    if (table.charset.empty())
        return ParseDvbText(text);
    ByteView const body = text.Part(table.prefix);
    std::string const bytes = table.oneByte ? DropControls(body) : std::string(body.begin(), body.end());
    auto result = ToUtf8(table.charset.c_str(), bytes);
    return result ? *result : ParseDvbText(text);
}

} // namespace zviptv::sim
