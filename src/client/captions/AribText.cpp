// SPDX-License-Identifier: MIT
#include "AribText.h"

#include "CaptionText.h"

#include <zviptv/client/ByteView.h>

#include <algorithm>

namespace zviptv {

namespace {

Colour ColourOf(int rgb)
{
    auto const part = [rgb](int shift) { return static_cast<std::uint8_t>(rgb >> shift & 0xFF); };
    return {part(16), part(8), part(0)};
}

CaptionRun LookOf(arib_buf_region_t const& region, int height)
{
    CaptionRun look;
    look.foreground = ColourOf(region.i_foreground_color);
    look.isDoubleHeight = region.i_fontheight > height;
    look.isDoubleWidth = region.i_fontwidth > height;
    look.isSmall = region.i_fontheight < height;
    return look;
}

/// A space ends the parameters of some sequences.
bool IsParameter(std::uint8_t byte)
{
    return byte == 0x20 || (byte & 0xF0) == 0x30;
}

/// With its first and last byte.
std::size_t SequenceSize(ByteView sequence)
{
    std::size_t size = 1;
    while (IsParameter(sequence[size])) {
        ++size;
    }
    return size + 1;
}

bool IsDecodable(ByteView sequence)
{
    constexpr std::size_t Longest = 16;
    constexpr unsigned MostDigits = 5;
    constexpr std::uint8_t Separator = 0x3B;
    unsigned digits = 0;
    unsigned mostDigits = 0;
    for (std::uint8_t const byte : sequence.Part(1)) {
        digits = IsParameter(byte) && byte != Separator ? digits + 1 : 0;
        mostDigits = std::max(mostDigits, digits);
    }
    std::uint8_t const function = sequence[sequence.Size() - 1];
    bool const isFormat = function == 'S' || function == 'T' || function == 'B'; // SWF, CCC, GSM
    return !isFormat && sequence.Size() <= Longest && mostDigits <= MostDigits;
}

} // namespace

std::vector<std::uint8_t> DecodableText(std::vector<std::uint8_t> const& text)
{
    constexpr std::uint8_t ControlSequence = 0x9B;
    ByteView rest(text);
    std::vector<std::uint8_t> decodable;
    decodable.reserve(text.size());
    while (!rest.Empty()) {
        if (rest[0] != ControlSequence) {
            decodable.push_back(rest[0]);
            rest = rest.Part(1);
            continue;
        }
        std::size_t const size = SequenceSize(rest);
        ByteView const sequence = rest.Part(0, size);
        if (IsDecodable(sequence)) {
            decodable.insert(decodable.end(), sequence.begin(), sequence.end());
        }
        rest = rest.Part(size);
    }
    return decodable;
}

std::vector<CaptionLine> LinesOf(arib_buf_region_t const* regions, int height)
{
    std::vector<CaptionLine> lines;
    LineBuilder line;
    int bottom = regions != nullptr ? regions->i_charbottom : 0;
    for (auto const* region = regions; region != nullptr; region = region->p_next) {
        if (region->i_charbottom != bottom) {
            line.EndLine(lines);
            bottom = region->i_charbottom;
        }
        if (region->p_start != nullptr && region->p_end > region->p_start) {
            line.Add(std::string(region->p_start, region->p_end), LookOf(*region, height));
        }
    }
    line.EndLine(lines);
    return lines;
}

} // namespace zviptv
