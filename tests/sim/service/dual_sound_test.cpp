// SPDX-License-Identifier: MIT
#include "GeneratedStreamTest.h"

namespace zviptv::test {
namespace {

constexpr std::uint16_t Dual = 0x101;
constexpr std::uint16_t Stereo = 0x102;

/// Two frames of MPEG-1 layer II, 192 kbit/s, 48 kHz; `mode` is the head's fourth byte.
Bytes Frames(std::uint8_t mode)
{
    Bytes frame{0xFF, 0xFD, 0xA4, mode};
    frame.resize(576, 0x55);
    return frame + frame;
}

/// The record of a mode: four bytes, and whether there are two sounds.
std::string Record(char mode, bool available)
{
    return std::string{mode, 0, 0, 0, static_cast<char>(available), 0, 0, 0};
}

/// A track whose channels are independent sounds, and one in stereo.
class DualSound : public GeneratedStream
{
protected:
    void SetUp() override
    {
        StreamBuilder builder;
        builder.Section(0, MakePat({{1, 0x1000}}));
        builder.Section(0x1000, MakePmt(1, Dual, {{0x03, Dual, {}}, {0x03, Stereo, {}}}));
        builder.Pcr(Dual, 27'000'000);
        builder.Pes(Dual, MakePes(90'000, Frames(0x80), false, {}, 0xC0));
        builder.Pes(Stereo, MakePes(90'000, Frames(0x00), false, {}, 0xC1));
        PlayToTheEnd(builder);
        m_application.Announce("BROADCASTDATA");
    }

    std::string Set(std::string const& function, std::string const& key, std::string const& value)
    {
        return Number(m_application.Ask("PLAYERCONTROL", {{"functionname", function}, {key, value}}),
                      "result_internal");
    }

    void ExpectModes(std::string const& current, std::string const& next)
    {
        WireMessage const reply =
            m_application.Ask("BROADCASTDATA", {{"functionname", "GetDigitalDualSound"}});
        EXPECT_EQ(Number(reply, "result_internal"), "1");
        EXPECT_EQ(reply.Value("currentMode"), current);
        EXPECT_EQ(reply.Value("nextMode"), next);
    }
};

TEST_F(DualSound, IsAvailableOnATrackOfTwoSounds)
{
    ExpectModes(Record(0, true), Record(1, true));
    WireMessage const audio =
        m_application.Ask("BROADCASTDATA", {{"functionname", "GetAudio"}, {"index", "0"}});
    EXPECT_EQ(audio.Value("audio").substr(20, 2), "\x02\x01") << "two channels, dual mono";
}

TEST_F(DualSound, CyclesThroughItsModes)
{
    EXPECT_EQ(Set("SetDigitalDualSound", "mode", "1"), "1");
    ExpectModes(Record(1, true), Record(2, true));
    EXPECT_EQ(Set("SetDigitalDualSound", "mode", "3"), "1");
    ExpectModes(Record(3, true), Record(0, true));
    for (char const* const mode : {"4", "-1", "both"}) {
        EXPECT_EQ(Set("SetDigitalDualSound", "mode", mode), "0") << mode;
    }
    ExpectModes(Record(3, true), Record(0, true));
}

TEST_F(DualSound, IsNotAvailableInStereo)
{
    EXPECT_EQ(Set("SetDigitalDualSound", "mode", "2"), "1");
    EXPECT_EQ(Set("SetCurrentAudioByIndex", "index", "1"), "1");
    ExpectModes(Record(2, false), Record(2, false));
    EXPECT_EQ(Set("SetCurrentAudioByIndex", "index", "0"), "1");
    ExpectModes(Record(2, true), Record(3, true));
}

} // namespace
} // namespace zviptv::test
