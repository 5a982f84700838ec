// SPDX-License-Identifier: MIT
#include "Enumerations.h"

#include "Words.h"

namespace zviptv::ctl {

char const* EnumInfo::NameOf(std::int32_t value) const
{
    for (EnumName const& known : *this) {
        if (known.value == value) {
            return known.name;
        }
    }
    return nullptr;
}

std::optional<std::int32_t> EnumInfo::ValueOf(std::string_view name) const
{
    std::string const wanted = ToLower(name);
    std::string const prefix = ToLower(m_prefix);
    for (EnumName const& known : *this) {
        std::string const shortName = ToLower(known.name);
        if (wanted == shortName || wanted == prefix + shortName) {
            return known.value;
        }
    }
    return std::nullopt;
}

std::string LowerName(EnumInfo const& info, std::int32_t value)
{
    char const* const name = info.NameOf(value);
    return name == nullptr ? std::to_string(value) : ToLower(name);
}

} // namespace zviptv::ctl
