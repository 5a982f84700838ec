// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Caption.h>

#include <libzvbi.h>

#include <vector>

namespace zviptv {

/// What a viewer sees of a page: of a subtitle the text in boxes, of another page all rows but the header.
std::vector<CaptionLine> LinesOf(vbi_page const& page);

} // namespace zviptv
