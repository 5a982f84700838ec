// SPDX-License-Identifier: MIT
#include "guide/XmltvText.h"

namespace zviptv::sim {

void TidyText(std::string& text)
{
    std::size_t size = 0;
    for (char const c : text) {
        bool const needless = IsBlank(c) && (size == 0 || text[size - 1] == ' ');
        if (!needless) {
            text[size++] = IsBlank(c) ? ' ' : c;
        }
    }
    if (size > 0 && text[size - 1] == ' ') {
        --size;
    }
    text.resize(size);
}

std::string_view CutUtf8(std::string_view text, std::size_t limit)
{
    if (text.size() <= limit) {
        return text;
    }
    while (limit > 0 && (static_cast<unsigned char>(text[limit]) & 0xC0) == 0x80) {
        --limit;
    }
    return text.substr(0, limit);
}

std::string Quoted(std::string_view text)
{
    constexpr std::size_t MaxQuoted = 60;
    return "\"" + std::string(CutUtf8(text, MaxQuoted)) + "\"";
}

} // namespace zviptv::sim
