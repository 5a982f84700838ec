// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Caption.h>

#include <cstdint>
#include <ctime>
#include <vector>

extern "C" { // its headers lack this
#include <aribb24/aribb24.h>
#include <aribb24/decoder.h>
}

namespace zviptv {

/// The text of a statement without what libaribb24 1.0.3 gets wrong in control sequences (CSI): it stores any
/// number of parameters in an array of 256, adds up any number of digits in an int, and takes the writing
/// format (SWF, CCC, GSM) for the size of the display area (SDF).
std::vector<std::uint8_t> DecodableText(std::vector<std::uint8_t> const& text);

/// The decoded text, with a line for each position of the text's lower edge. `height` is that of a normal
/// character.
std::vector<CaptionLine> LinesOf(arib_buf_region_t const* regions, int height);

} // namespace zviptv
