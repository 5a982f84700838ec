// SPDX-License-Identifier: MIT
#include "DenseStream.h"

#include <fstream>

namespace zviptv::test {

namespace {

constexpr std::uint64_t TicksPerSecond = 90000;
constexpr std::uint64_t FirstPts = 2 * TicksPerSecond;
constexpr std::uint64_t PcrPerTick = 300;

/// A data field of two subtitle units of 44 bytes.
Bytes TeletextField(unsigned number)
{
    Bytes field{0x10};
    for (unsigned line = 0; line < 2; ++line) {
        field = field + Bytes{0x03, 0x2C} + Noise(44, 2 * number + line);
    }
    return field;
}

} // namespace

Bytes WriteDenseStream(std::string const& path, DensePlan const& plan)
{
    Bytes const pmt = MakePmt(1, DenseVideo,
                              {{0x1B, DenseVideo, {}},
                               {0x03, DenseAudio, {0x0A, 4, 'e', 'n', 'g', 0}},
                               {0x06, DenseTeletext, {0x56, 5, 'e', 'n', 'g', 0x10, 0x88}}});
    StreamBuilder builder;
    for (unsigned i = 0; i < plan.perSecond * plan.seconds; ++i) {
        std::uint64_t const time = FirstPts + i * TicksPerSecond / plan.perSecond;
        if (i % plan.perSecond == 0) {
            builder.Section(0x0000, MakePat({{1, 0x1000}})).Section(0x1000, pmt);
        }
        builder.Pcr(DenseVideo, (time - TicksPerSecond / 4) * PcrPerTick);
        builder.Pes(DenseVideo, MakePes(time, Noise(plan.videoBytes, 3 * i), false, {}, 0xE0));
        builder.Pes(DenseAudio, MakePes(time, Noise(400, 3 * i + 1), false, {}, 0xC0));
        builder.Pes(DenseTeletext, MakePes(time, TeletextField(i)));
    }
    Bytes const& stream = builder.Stream();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<char const*>(stream.data()), static_cast<std::streamsize>(stream.size()));
    return stream;
}

} // namespace zviptv::test
