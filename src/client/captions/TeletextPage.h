// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Caption.h>

#include <libzvbi.h>

#include <vector>

namespace zviptv {

/// The visible part of a page: the boxed text of a subtitle, or all rows except the header of another page.
std::vector<CaptionLine> LinesOf(vbi_page const& page);

} // namespace zviptv
