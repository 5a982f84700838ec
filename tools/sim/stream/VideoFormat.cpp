// SPDX-License-Identifier: MIT
#include "stream/VideoFormat.h"

#include "mpegts/PesHeader.h"
#include "stream/H264Sps.h"
#include "stream/HevcSps.h"
#include "stream/MpegSequence.h"

#include <limits>
#include <numeric>

namespace zviptv::sim {

Ratio Reduce(std::uint64_t numerator, std::uint64_t denominator)
{
    constexpr std::uint64_t Largest = std::numeric_limits<std::uint32_t>::max();
    if (numerator == 0 || denominator == 0) {
        return {};
    }
    std::uint64_t const divisor = std::gcd(numerator, denominator);
    if (numerator / divisor > Largest || denominator / divisor > Largest) {
        return {};
    }
    return {static_cast<std::uint32_t>(numerator / divisor),
            static_cast<std::uint32_t>(denominator / divisor)};
}

std::optional<VideoFormat> ParseVideoFormat(VideoCodec codec, ByteView pes)
{
    auto const header = ParsePesHeader(pes);
    if (!header) {
        return std::nullopt;
    }
    ByteView const bytes = header->payload;
    switch (codec) {
    case VideoCodec::Mpeg1:
    case VideoCodec::Mpeg2:
        return ParseMpegSequence(bytes);
    case VideoCodec::H264:
        return ParseH264Sps(bytes);
    case VideoCodec::Hevc:
        return ParseHevcSps(bytes);
    case VideoCodec::Mpeg4:
        break;
    }
    return std::nullopt;
}

} // namespace zviptv::sim
