#include "guide/CharacterSet.h"

#include <algorithm>
#include <cerrno>
#include <iconv.h>

namespace zviptv::sim {

namespace {

class Converter
{
public:
    Converter(char const* to, char const* from) : m_handle(iconv_open(to, from)) {}
    Converter(Converter const&) = delete;
    Converter& operator=(Converter const&) = delete;
    ~Converter()
    {
        if (Ok())
            iconv_close(m_handle);
    }

    // NOLINTNEXTLINE(performance-no-int-to-ptr): so iconv_open says that there is none
    bool Ok() const { return m_handle != iconv_t(-1); }

    /// Nothing when the text is no whole and valid text, or has more than `limit` bytes then.
    std::optional<std::string> Convert(std::string_view text, std::size_t limit)
    {
        std::string input(text);
        std::string output(limit, '\0');
        char* in = input.data();
        char* out = output.data();
        std::size_t inLeft = input.size();
        std::size_t outLeft = output.size();
        iconv(m_handle, nullptr, nullptr, nullptr, nullptr);
        bool const whole = iconv(m_handle, &in, &inLeft, &out, &outLeft) != NoCount &&
                           iconv(m_handle, nullptr, nullptr, &out, &outLeft) != NoCount;
        if (!whole)
            return std::nullopt;
        output.resize(limit - outLeft);
        return output;
    }

private:
    static constexpr std::size_t NoCount = static_cast<std::size_t>(-1);

    iconv_t m_handle;
};

constexpr int NoCharacter = -1;
constexpr int HalfCharacter = -2;

/// The character that a byte is.
int Character(Converter& converter, char byte)
{
    auto const character = converter.Convert({&byte, 1}, 16);
    if (!character)
        return errno == EINVAL ? HalfCharacter : NoCharacter;
    if (character->size() != 4)
        return NoCharacter;
    int value = 0;
    for (char const part : *character)
        value = value << 8 | static_cast<unsigned char>(part);
    return value;
}

bool IsControl(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

} // namespace

std::optional<std::string> ToUtf8(char const* charset, std::string_view bytes)
{
    constexpr std::size_t MaxGrowth = 4;
    Converter converter("UTF-8", charset);
    auto text =
        converter.Ok() ? converter.Convert(bytes, bytes.size() * MaxGrowth + MaxGrowth) : std::nullopt;
    if (text)
        text->erase(std::remove_if(text->begin(), text->end(), IsControl), text->end());
    return text;
}

std::optional<std::array<int, 256>> ByteCharacters(char const* charset)
{
    Converter converter("UCS-4BE", charset);
    if (!converter.Ok())
        return std::nullopt;
    std::array<int, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = Character(converter, static_cast<char>(byte));
    bool const isAscii = table['<'] == '<' && table['a'] == 'a';
    bool const isWhole = std::count(table.begin(), table.end(), HalfCharacter) == 0;
    return isAscii && isWhole ? std::optional(table) : std::nullopt;
}

} // namespace zviptv::sim
