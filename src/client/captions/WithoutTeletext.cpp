// SPDX-License-Identifier: MIT
#include <zviptv/client/CaptionDecoder.h>

// For builds without libzvbi.

namespace zviptv {

struct TeletextDecoder::State
{
};

TeletextDecoder::TeletextDecoder(TeletextPages /*pages*/) {}
TeletextDecoder::~TeletextDecoder() = default;
TeletextDecoder::TeletextDecoder(TeletextDecoder&& other) noexcept = default;
TeletextDecoder& TeletextDecoder::operator=(TeletextDecoder&& other) noexcept = default;

bool TeletextDecoder::IsAvailable()
{
    return false;
}

std::vector<Caption> TeletextDecoder::Decode(ByteView /*field*/, std::optional<std::uint64_t> /*pts*/)
{
    return {};
}

std::vector<Caption> TeletextDecoder::Flush()
{
    return {};
}

} // namespace zviptv
