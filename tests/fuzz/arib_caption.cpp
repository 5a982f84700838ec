// SPDX-License-Identifier: MIT
#include "CaptionChecks.h"

#include <zviptv/client/CaptionDecoder.h>

// ARIB captions: whole data fields of any content, and text of any content in a field that is well formed.

using namespace zviptv;
using Bytes = std::vector<std::uint8_t>;
using Decoder = AribCaptionDecoder;

namespace {

void AddSize(Bytes& field, std::size_t size)
{
    field.insert(field.end(), {static_cast<std::uint8_t>(size >> 16U), static_cast<std::uint8_t>(size >> 8U),
                               static_cast<std::uint8_t>(size)});
}

Bytes WithText(Bytes const& text)
{
    Bytes field{0x80, 0xFF, 0xF0, 1 << 2, 0, 0, 0xFF, 0xFF, 0x3F};
    AddSize(field, text.size() + 5);
    field.insert(field.end(), {0x1F, 0x20});
    AddSize(field, text.size());
    field.insert(field.end(), text.begin(), text.end());
    return field;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    Decoder decoder(input.ConsumeBool() ? Decoder::Profile::Full : Decoder::Profile::OneSegment);
    bool const isText = input.ConsumeBool();
    std::size_t const fieldSize = input.ConsumeIntegralInRange<std::size_t>(1, 5000);
    while (input.remaining_bytes() > 0) {
        Bytes const bytes = input.ConsumeBytes<std::uint8_t>(fieldSize);
        if (auto const caption = decoder.Decode(isText ? WithText(bytes) : bytes, 1)) {
            fuzz::CheckCaption(*caption);
        }
    }
    return 0;
}
