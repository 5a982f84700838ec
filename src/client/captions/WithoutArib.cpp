// SPDX-License-Identifier: MIT
#include <zviptv/client/CaptionDecoder.h>

// For builds without libaribb24.

namespace zviptv {

struct AribCaptionDecoder::State
{
};

AribCaptionDecoder::AribCaptionDecoder(Profile /*profile*/) {}
AribCaptionDecoder::~AribCaptionDecoder() = default;
AribCaptionDecoder::AribCaptionDecoder(AribCaptionDecoder&& other) noexcept = default;
AribCaptionDecoder& AribCaptionDecoder::operator=(AribCaptionDecoder&& other) noexcept = default;

bool AribCaptionDecoder::IsAvailable()
{
    return false;
}

std::optional<Caption> AribCaptionDecoder::Decode(ByteView /*field*/, std::optional<std::uint64_t> /*pts*/)
{
    return std::nullopt;
}

} // namespace zviptv
