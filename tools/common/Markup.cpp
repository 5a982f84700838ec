// SPDX-License-Identifier: MIT
#include "common/Markup.h"

namespace zviptv {

std::string EscapeMarkup(std::string_view text)
{
    std::string escaped;
    for (char const character : text) {
        switch (character) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

} // namespace zviptv
