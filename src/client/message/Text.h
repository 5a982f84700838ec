// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Language.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace zviptv::client {

/// "unknown (17)": an enumerator without a name.
inline std::string UnknownText(std::int32_t number)
{
    return "unknown (" + std::to_string(number) + ")";
}

/// The beginning of a value, for a message: whole characters of printable ASCII.
inline std::string Shown(std::string_view value, char quote = '"')
{
    std::size_t const longest = 40;
    std::string shown(1, quote);
    for (char const byte : value.substr(0, longest)) {
        shown += byte >= ' ' && byte <= '~' ? byte : '?';
    }
    return shown + quote + (value.size() > longest ? "..." : "");
}

/// "0x101"
std::string HexText(std::uint32_t number);

/// Fields of a record in one line: "language=eng pid=0x101".
class FieldsText
{
public:
    template <class Value>
    void Add(char const* name, Value value)
    {
        if constexpr (std::is_arithmetic_v<Value>) {
            AddText(name, std::to_string(value));
        } else {
            AddText(name, ToString(value));
        }
    }
    void AddHex(char const* name, std::uint32_t value) { AddText(name, HexText(value)); }

    std::string Take() { return std::move(m_text); }

private:
    void AddText(char const* name, std::string const& value)
    {
        m_text.append(m_text.empty() ? "" : " ").append(name).append("=").append(value);
    }

    std::string m_text;
};

} // namespace zviptv::client
