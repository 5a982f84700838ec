// SPDX-License-Identifier: MIT
#include "GeneratedStreamTest.h"

namespace zviptv::test {
namespace {

constexpr std::uint16_t Audio = 0x101;

/// A stream whose only PCR says one second.
class StreamWithOnePcr : public GeneratedStream
{
protected:
    static StreamBuilder Begin()
    {
        StreamBuilder builder;
        builder.Section(0, MakePat({{1, 0x1000}})).Section(0x1000, MakePmt(1, Audio, {{0x03, Audio, {}}}));
        builder.Pcr(Audio, PtsSecond * 300);
        return builder;
    }

    std::uint64_t StcAtTheEnd()
    {
        m_application.Announce("PLAYERCONTROL");
        return std::stoull(
            Number(m_application.Ask("PLAYERCONTROL", {{"functionname", "GetSTCCount"}}), "stcCount"));
    }
};

TEST_F(StreamWithOnePcr, IsReplacedByTimeStamps)
{
    StreamBuilder builder = Begin();
    for (std::uint64_t second = 10; second <= 40; ++second) {
        builder.Pes(Audio, MakePes(second * PtsSecond, Noise(100), false, {}, 0xC0));
    }
    PlayToTheEnd(builder);
    std::uint64_t const stc = StcAtTheEnd();
    EXPECT_GE(stc, 40 * PtsSecond);
    EXPECT_LE(stc, 41 * PtsSecond);
}

TEST_F(StreamWithOnePcr, IsFollowedAtFiveMegabitsWithoutThem)
{
    StreamBuilder builder = Begin();
    builder.Null(10000);
    PlayToTheEnd(builder);
    constexpr double seconds = 10000 * 188 * 8 / 5e6;
    EXPECT_NEAR(static_cast<double>(StcAtTheEnd()), (1 + seconds) * PtsSecond, 100);
}

} // namespace
} // namespace zviptv::test
