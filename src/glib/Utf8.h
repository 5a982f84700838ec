// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <string>
#include <string_view>

namespace zviptv {

/// The text in UTF-8: other bytes, and zero bytes, become U+FFFD.
inline std::string ValidUtf8(std::string_view text)
{
    Owned<char> const valid(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    return valid.get();
}

} // namespace zviptv
