// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IPTVTypes.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zviptv::ctl {

struct EnumName
{
    std::int32_t value;
    char const* name; ///< without the enumeration's prefix
};

/// The names of an enumeration's values.
class EnumInfo
{
public:
    template <std::size_t Count>
    constexpr EnumInfo(char const* type, char const* prefix, EnumName const (&names)[Count])
        : m_type(type), m_prefix(prefix), m_names(names), m_count(Count)
    {
    }

    char const* Type() const { return m_type; }
    EnumName const* begin() const { return m_names; }
    EnumName const* end() const { return m_names + m_count; }

    /// The name; null for a value without a name.
    char const* NameOf(std::int32_t value) const;

    /// The value of a name, with or without the prefix, in upper or lower case.
    std::optional<std::int32_t> ValueOf(std::string_view name) const;

private:
    char const* m_type;
    char const* m_prefix;
    EnumName const* m_names;
    std::size_t m_count;
};

/// Specialised for the enumerations of the protocol in ProtocolTypes.h, which is generated.
template <typename Enumeration>
EnumInfo const& InfoOf();

/// The name in lower case, for tables and sentences; the number if there is no name.
std::string LowerName(EnumInfo const& info, std::int32_t value);

template <typename Enumeration>
std::string LowerName(Enumeration value)
{
    return LowerName(InfoOf<Enumeration>(), static_cast<std::int32_t>(value));
}

} // namespace zviptv::ctl
