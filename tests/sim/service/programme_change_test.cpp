// SPDX-License-Identifier: MIT
#include "../stream/StreamBuilder.h"
#include "SimulatorTest.h"
#include "WaitUntil.h"

#include <filesystem>
#include <fstream>

namespace zviptv::test {
namespace {

constexpr std::uint16_t PmtPid = 0x1000;
constexpr std::uint16_t Video = 0x100;
constexpr std::uint64_t FirstTime = 10 * PtsSecond;
constexpr std::uint64_t SecondTime = 500 * PtsSecond;

Bytes Language(char const* code)
{
    return {0x0A,
            4,
            static_cast<std::uint8_t>(code[0]),
            static_cast<std::uint8_t>(code[1]),
            static_cast<std::uint8_t>(code[2]),
            0};
}

Bytes Teletext(std::uint8_t page)
{
    return {0x56, 5, 'e', 'n', 'g', 0x10, page};
}

/// A stream whose announcements change in the middle.
class ProgrammeChange : public Simulator
{
protected:
    /// A second of video from this time on.
    void AddPart(std::uint64_t time, std::uint16_t programme, Bytes const& pmt, std::uint8_t patVersion)
    {
        m_builder.Section(0, MakePat({{programme, PmtPid}}, patVersion)).Section(PmtPid, pmt);
        for (std::uint64_t i = 0; i < 10; ++i) {
            std::uint64_t const at = time + i * PtsSecond / 10;
            m_builder.Pcr(Video, (at - PtsSecond / 4) * 300, i == 0);
            m_builder.Pes(Video, MakePes(at, Noise(500), false, {}, 0xE0));
        }
    }

    /// Video, two tracks of sound and two pages of teletext.
    void AddFirstPart()
    {
        AddPart(FirstTime, 1,
                MakePmt(1, Video,
                        {{0x1B, Video, {}},
                         {0x03, 0x101, Language("eng")},
                         {0x03, 0x102, Language("deu")},
                         {0x06, 0x104, Teletext(0x88)},
                         {0x06, 0x105, Teletext(0x89)}}),
                0);
    }

    /// The stream waits for a subscriber; the second of each list is chosen.
    void Begin()
    {
        std::string const path = m_bus.Directory() + "/change.ts";
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<char const*>(m_builder.Stream().data()),
                   static_cast<std::streamsize>(m_builder.Stream().size()));
        Start({"--ts", path, "--wait-for", "1", "--speed", "4"});
        m_application.Announce("IPTVDATASUBSCRIBER");
        Choose("SetCurrentAudioByIndex");
        Choose("SetCurrentTTX");
        Choose("SetCurrentHybridSBT");
    }

    void Choose(char const* function)
    {
        EXPECT_EQ(Number(m_application.Ask("PLAYERCONTROL", {{"functionname", function}, {"index", "1"}}),
                         "result_internal"),
                  "1")
            << function;
    }

    bool PlayUntilTracks(std::string const& count)
    {
        m_application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
        return WaitUntil([&] { return Ask("SizeOfAudio").Value("size") == count; }, Patience);
    }

    WireMessage Ask(char const* function)
    {
        return m_application.Ask("BROADCASTDATA", {{"functionname", function}});
    }

    /// The index that a getter returns with success.
    std::string Current(char const* function)
    {
        WireMessage const reply = Ask(function);
        EXPECT_EQ(Number(reply, "result_internal"), "1") << function;
        return reply.Value("index");
    }

    std::string FirstPts()
    {
        return m_application.Ask("PLAYERCONTROL", {{"functionname", "GetFirstPTS"}}).Value("firstPTS");
    }

    StreamBuilder m_builder;
    Application m_application;
};

TEST_F(ProgrammeChange, ARemovedTrackIsNotSelected)
{
    AddFirstPart();
    AddPart(SecondTime, 1,
            MakePmt(1, Video,
                    {{0x1B, Video, {}}, {0x03, 0x101, Language("eng")}, {0x06, 0x104, Teletext(0x88)}}, 1),
            0);
    Begin();
    ASSERT_TRUE(PlayUntilTracks("1"));
    EXPECT_EQ(Current("GetCurrentAudioInfo"), "0");
    EXPECT_EQ(Current("GetCurrentTTX"), "0");
    EXPECT_EQ(Current("GetCurrentHybridSBT"), "0");
    EXPECT_TRUE(m_simulator->WaitForErrors("the stream has ended", Patience));
    EXPECT_EQ(FirstPts(), std::to_string(FirstTime)) << "the same video";
}

TEST_F(ProgrammeChange, AMovedTrackStaysSelected)
{
    AddFirstPart();
    AddPart(SecondTime, 1,
            MakePmt(1, Video,
                    {{0x1B, Video, {}},
                     {0x03, 0x103, Language("fra")},
                     {0x03, 0x101, Language("eng")},
                     {0x03, 0x102, Language("deu")},
                     {0x06, 0x105, Teletext(0x89)}},
                    1),
            0);
    Begin();
    ASSERT_TRUE(PlayUntilTracks("3"));
    EXPECT_EQ(Current("GetCurrentAudioInfo"), "2");
    EXPECT_EQ(Current("GetCurrentTTX"), "0");
    EXPECT_EQ(Current("GetCurrentHybridSBT"), "0");
}

/// It has the same PIDs, as many do.
TEST_F(ProgrammeChange, AnotherProgrammeResetsTheSelection)
{
    AddFirstPart();
    AddPart(SecondTime, 2,
            MakePmt(2, Video,
                    {{0x1B, Video, {}},
                     {0x03, 0x101, Language("eng")},
                     {0x03, 0x102, Language("deu")},
                     {0x03, 0x103, Language("fra")},
                     {0x06, 0x104, Teletext(0x88)}}),
            1);
    Begin();
    ASSERT_TRUE(PlayUntilTracks("3"));
    EXPECT_EQ(Current("GetCurrentAudioInfo"), "0");
    EXPECT_EQ(Current("GetCurrentTTX"), "0");
    EXPECT_TRUE(m_simulator->WaitForErrors("the stream has ended", Patience));
    EXPECT_EQ(FirstPts(), std::to_string(SecondTime));
}

/// A file that is played over and over, and is emptied.
TEST_F(Simulator, EndsAfterTheStream)
{
    std::string const path = m_bus.Directory() + "/cut.ts";
    std::filesystem::copy_file(ZVIPTV_SAMPLE_FILE, path);
    Start({"--ts", path, "--loop", "--speed", "20"});
    std::filesystem::resize_file(path, 0);
    EXPECT_TRUE(m_simulator->WaitForErrors("the stream has ended", Patience));
    Application application;
    application.Announce("PLAYERCONTROL");
    EXPECT_EQ(Number(application.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}}), "sourcestate"),
              "3");
}

} // namespace
} // namespace zviptv::test
