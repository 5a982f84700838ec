// SPDX-License-Identifier: MIT
#include "stream/CharacterSet.h"

#include <zviptv/client/ByteView.h>

#include <algorithm>
#include <cerrno>
#include <iconv.h>
#include <stdexcept>

namespace zviptv::sim {

namespace {

class Converter
{
public:
    explicit Converter(char const* from) : m_handle(iconv_open("UTF-32BE", from)) {}
    Converter(Converter const&) = delete;
    Converter& operator=(Converter const&) = delete;
    ~Converter()
    {
        if (Ok()) {
            iconv_close(m_handle);
        }
    }

    // NOLINTNEXTLINE(performance-no-int-to-ptr): so iconv_open says that there is none
    bool Ok() const { return m_handle != iconv_t(-1); }

    /// Converts as much as it can, and moves `from` past it.
    std::u32string Convert(std::string_view& from)
    {
        std::string input(from);
        std::string output((from.size() + 1) * 4, '\0');
        char* in = input.data();
        char* out = output.data();
        std::size_t inLeft = input.size();
        std::size_t outLeft = output.size();
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        m_error = iconv(m_handle, &in, &inLeft, &out, &outLeft) == NoCount ? errno : 0;
        iconv(m_handle, nullptr, nullptr, &out, &outLeft);
        from.remove_prefix(from.size() - inLeft);
        ByteView const made(reinterpret_cast<std::uint8_t const*>(output.data()), output.size() - outLeft);
        std::u32string characters;
        for (std::size_t at = 0; at < made.Size(); at += 4) {
            characters += static_cast<char32_t>(made.U32(at));
        }
        return characters;
    }

    /// The error of the last conversion; 0 if everything was converted.
    int Error() const { return m_error; }

private:
    static constexpr std::size_t NoCount = static_cast<std::size_t>(-1);

    iconv_t m_handle;
    int m_error = 0;
};

constexpr int NoCharacter = -1;
constexpr int HalfCharacter = -2;

/// The character of a byte.
int Character(Converter& converter, char byte)
{
    std::string_view text(&byte, 1);
    std::u32string const characters = converter.Convert(text);
    if (converter.Error() == EINVAL) {
        return HalfCharacter;
    }
    return converter.Error() == 0 && characters.size() == 1 ? static_cast<int>(characters[0]) : NoCharacter;
}

} // namespace

std::u32string ToUnicode(char const* charset, std::string_view bytes, std::size_t unit)
{
    Converter converter(charset);
    if (!converter.Ok()) {
        throw std::invalid_argument(std::string("iconv does not know the character set ") + charset);
    }
    std::u32string text;
    while (!bytes.empty()) {
        text += converter.Convert(bytes);
        if (converter.Error() != 0) {
            text += U'?';
            bytes.remove_prefix(std::min(unit, bytes.size()));
        }
    }
    return text;
}

std::optional<std::array<int, 256>> ByteCharacters(char const* charset)
{
    Converter converter(charset);
    if (!converter.Ok()) {
        return std::nullopt;
    }
    std::array<int, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte) {
        table[byte] = Character(converter, static_cast<char>(byte));
    }
    bool const isAscii = table['<'] == '<' && table['a'] == 'a';
    bool const isWhole = std::count(table.begin(), table.end(), HalfCharacter) == 0;
    return isAscii && isWhole ? std::optional(table) : std::nullopt;
}

} // namespace zviptv::sim
