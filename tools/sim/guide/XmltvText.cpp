#include "guide/XmltvText.h"

#include "guide/TextPool.h"

namespace zviptv::sim {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

void TidyText(std::string& text)
{
    std::size_t size = 0;
    for (char const c : text) {
        bool const needless = IsBlank(c) && (size == 0 || text[size - 1] == ' ');
        if (!needless)
            text[size++] = IsBlank(c) ? ' ' : c;
    }
    if (size > 0 && text[size - 1] == ' ')
        --size;
    text.resize(size);
}

std::string Quoted(std::string_view text)
{
    constexpr std::size_t MaxQuoted = 60;
    return "\"" + std::string(CutUtf8(text, MaxQuoted)) + "\"";
}

} // namespace zviptv::sim
