// SPDX-License-Identifier: MIT
#include "CaptionChecks.h"

#include <zviptv/client/CaptionDecoder.h>

// Teletext: data fields of any content, cut from the input, to a decoder of subtitles and to one of some
// pages.

using namespace zviptv;
using zviptv::fuzz::CheckCaption;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    TeletextDecoder decoder(input.ConsumeBool() ? TeletextPages()
                                                : TeletextPages{{100, 888}, {{888, "eng"}}});
    std::size_t const fieldSize = input.ConsumeIntegralInRange<std::size_t>(46, 736);
    std::uint64_t pts = 0;
    while (input.remaining_bytes() > 0) {
        auto const field = input.ConsumeBytes<std::uint8_t>(fieldSize);
        for (Caption const& caption : decoder.Decode(field, pts++)) {
            CheckCaption(caption);
        }
    }
    for (Caption const& caption : decoder.Flush()) {
        CheckCaption(caption);
    }
    return 0;
}
