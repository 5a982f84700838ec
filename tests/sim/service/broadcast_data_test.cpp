// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"

#include "../stream/StreamBuilder.h"

#include <fstream>

namespace zviptv::test {
namespace {

/// Broadcast data of the sample: two audio tracks, DVB subtitles, three teletext pages, an ARIB caption.
class BroadcastData : public Simulator
{
protected:
    void Begin(std::vector<std::string> options = {})
    {
        std::vector<std::string> all{"--ts", ZVIPTV_SAMPLE_FILE, "--loop"};
        all.insert(all.end(), options.begin(), options.end());
        Start(all);
        m_application.Announce(BroadcastWord);
    }

    WireMessage Ask(std::initializer_list<TextEntry> entries)
    {
        return m_application.Ask(BroadcastWord, entries);
    }

    Application m_application;
};

TEST_F(BroadcastData, ListsTheAudioTracksOfThePmt)
{
    Begin();
    EXPECT_EQ(Number(Ask({{"functionname", "SizeOfAudio"}}), "size"), "2");
    std::string const second = Ask({{"functionname", "GetAudio"}, {"index", "1"}}).Value("audio");
    ASSERT_EQ(second.size(), 32U);
    EXPECT_EQ(second.substr(0, 10), std::string("ued\0\1\0\0\0\x02\x01", 10)); // deu, MPEG, PID 0x102
    WireMessage const third = Ask({{"functionname", "GetAudio"}, {"index", "2"}});
    EXPECT_EQ(Number(third, "result_internal"), "0");
    EXPECT_EQ(third.Value("audio"), std::string(32, '\0'));
}

TEST_F(BroadcastData, SettersChangeTheResultsOfGetters)
{
    Begin();
    EXPECT_EQ(Number(Ask({{"functionname", "GetCurrentAudioInfo"}}), "landCode"), "6647399"); // eng
    m_application.Ask("PLAYERCONTROL", {{"functionname", "SetCurrentAudioByIndex"}, {"index", "1"}});
    WireMessage const current = Ask({{"functionname", "GetCurrentAudioInfo"}});
    EXPECT_EQ(Number(current, "landCode"), "6579573"); // deu
    EXPECT_EQ(Number(current, "index"), "1");
    m_application.Ask("PLAYERCONTROL", {{"functionname", "SetDigitalDualSound"}, {"mode", "2"}});
    EXPECT_EQ(Ask({{"functionname", "GetDigitalDualSound"}}).Value("currentMode"),
              std::string("\2\0\0\0\0\0\0\0", 8));
}

TEST_F(BroadcastData, ListsTheSubtitlesOfThePmt)
{
    Begin();
    EXPECT_EQ(Number(Ask({{"functionname", "SizeOfHybridSBT"}}), "size"), "3"); // two are teletext
    for (char const* const function : {"GetHybridSBT", "GetPreferredHybridSBT"}) {
        WireMessage const reply = Ask({{"functionname", function}, {"index", "0"}});
        EXPECT_EQ(Number(reply, "landCode"), "6647399");
        EXPECT_EQ(reply.Value("hybridSbt").substr(0, 15),
                  std::string("gne\0\1\0\0\0\x03\x01\1\0\1\0\x10",
                              15)); // eng, DVB, PID 0x103, pages 1 and 1, type 0x10
    }
}

TEST_F(BroadcastData, ListsTheTeletextPagesOfThePmt)
{
    Begin();
    EXPECT_EQ(Number(Ask({{"functionname", "SizeOfTTX"}}), "size"), "3");
    EXPECT_EQ(Number(Ask({{"functionname", "CheckHardOfHearingSBT"}}), "exists"), "1");
    std::vector<std::string> const records{
        std::string("gne\0\x04\x01\x01\x00\x01", 9),  // eng, PID 0x104, page 100, initial
        std::string("gne\0\x04\x01\x08\x88\x02", 9),  // eng, page 888, subtitles
        std::string("ued\0\x04\x01\x08\x89\x05", 9)}; // deu, page 889, for the hard of hearing
    for (std::size_t i = 0; i < records.size(); ++i) {
        std::string const index = std::to_string(i);
        EXPECT_EQ(Ask({{"functionname", "GetTTX"}, {"index", index}}).Value("ttx").substr(0, 9), records[i]);
    }
    std::string const english = Ask({{"functionname", "GetPreferredTTXSubtitle"}}).Value("ttxSubtitle");
    EXPECT_EQ(english.substr(0, 9), records[1]);
    m_application.Ask("PLAYERCONTROL", {{"functionname", "SetCurrentAudioByIndex"}, {"index", "1"}});
    std::string const german = Ask({{"functionname", "GetPreferredTTXSubtitle"}}).Value("ttxSubtitle");
    EXPECT_EQ(german.substr(0, 9), records[2]);
}

TEST_F(BroadcastData, ListsTheAribCaptionOfThePmt)
{
    Begin();
    EXPECT_EQ(Number(Ask({{"functionname", "SizeOfISDBText"}, {"mode", "0"}}), "size"), "1");
    EXPECT_EQ(Number(Ask({{"functionname", "SizeOfISDBText"}, {"mode", "1"}}), "size"), "0");
    WireMessage const reply = Ask({{"functionname", "GetISDBText"}, {"mode", "0"}, {"index", "0"}});
    EXPECT_EQ(reply.Value("isdbText").substr(4, 9),
              std::string("\0\0\0\0\x05\x01\x08\x00\x30", 9)); // caption, PID 0x105, component 8, tag 0x30
    WireMessage const mode = m_application.Ask("PLAYERCONTROL", {{"functionname", "GetCaptionDataMode"}});
    EXPECT_EQ(Number(mode, "mode"), "1"); // selectable
}

/// A stream of sound alone.
TEST_F(BroadcastData, ListsOnlyTracksOfTheStream)
{
    std::string const path = m_bus.Directory() + "/sound.ts";
    StreamBuilder builder;
    builder.Section(0, MakePat({{1, 0x1000}})).Section(0x1000, MakePmt(1, 0x101, {{0x03, 0x101, {}}}));
    builder.Pcr(0x101, 27'000'000).Pes(0x101, MakePes(90'000, Noise(100)));
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<char const*>(builder.Stream().data()),
               static_cast<std::streamsize>(builder.Stream().size()));
    Start({"--ts", path, "--loop"});
    m_application.Announce(BroadcastWord);
    for (char const* const function : {"SizeOfTTX", "SizeOfHybridSBT", "SizeOfISDBText"}) {
        EXPECT_EQ(Number(Ask({{"functionname", function}, {"mode", "0"}}), "size"), "0") << function;
    }
    for (char const* const function : {"GetPreferredTTXSubtitle", "GetPreferredHybridSBT"}) {
        EXPECT_EQ(Number(Ask({{"functionname", function}}), "result_internal"), "0") << function;
    }
    EXPECT_EQ(Number(Ask({{"functionname", "CheckHardOfHearingSBT"}}), "exists"), "0");
    WireMessage const chosen =
        m_application.Ask("PLAYERCONTROL", {{"functionname", "SetCurrentTTX"}, {"index", "0"}});
    EXPECT_EQ(Number(chosen, "result_internal"), "0");
    WireMessage const mode = m_application.Ask("PLAYERCONTROL", {{"functionname", "GetCaptionDataMode"}});
    EXPECT_EQ(Number(mode, "mode"), "0"); // none
}

TEST_F(BroadcastData, RefusalsAlsoContainTheValues)
{
    Begin();
    struct Row
    {
        char const* function;
        std::vector<std::string> keys;
        bool refuses; ///< for want of the index 99, or of caption services
    };
    for (Row const& row : std::vector<Row>{{"GetAudio", {"audio"}, true},
                                           {"GetTTX", {"ttx"}, true},
                                           {"GetHybridSBT", {"landCode", "hybridSbt"}, true},
                                           {"GetISDBText", {"isdbText"}, true},
                                           {"GetAudioFormat", {"encodeType"}, false},
                                           {"GetCurrentTTX", {"landCode", "index"}, false},
                                           {"GetCurrentHybridSBT", {"landCode", "index"}, false},
                                           {"GetCurrentISDBText", {"landCode", "index"}, false},
                                           {"GetCaptionLanguage", {"landCode", "koreanCode"}, true},
                                           {"GetRatingInfo", {"ratingInfoSize"}, false},
                                           {"FlagServiceLocked", {"outServiceLocked"}, false}}) {
        WireMessage const reply =
            Ask({{"functionname", row.function}, {"index", "99"}, {"mode", "0"}, {"service", "1"}});
        EXPECT_EQ(Number(reply, "result_internal"), row.refuses ? "0" : "1") << row.function;
        for (std::string const& key : row.keys) {
            EXPECT_FALSE(reply.Value(key).empty()) << row.function << " " << key;
        }
    }
}

/// At this time the sample guide has a programme rated 16 and R, which is 17, on the sample's service.
class ParentalLock : public BroadcastData
{
protected:
    void Begin(std::vector<std::string> options = {})
    {
        options.insert(options.end(), {"--guide", ZVIPTV_SAMPLE_GUIDE, "--time", "1774735200"});
        BroadcastData::Begin(options);
    }

    std::string Locked() { return Number(Ask({{"functionname", "GetRatingLockState"}}), "lockState"); }
};

TEST_F(ParentalLock, FollowsTheGuidesRating)
{
    Begin({"--rating-limit", "12"});
    WireMessage const ratings = Ask({{"functionname", "GetRatingInfo"}});
    EXPECT_EQ(Number(ratings, "ratingInfoSize"), "1");
    EXPECT_EQ(ratings.Value("ratingInfo"), std::string("\0\0\x11", 3));
    EXPECT_EQ(Locked(), "1");
    EXPECT_EQ(Number(Ask({{"functionname", "UnMuteByRatingPin"}}), "result_internal"), "1");
    EXPECT_EQ(Locked(), "0");
    EXPECT_EQ(Number(Ask({{"functionname", "UnMuteByRatingPin"}}), "result_internal"), "0");
    Ask({{"functionname", "SetUnlockedInfo"}, {"ratingInfo", "0"}});
    EXPECT_EQ(Locked(), "1");
    Ask({{"functionname", "SetUnlockedInfo"}, {"ratingInfo", "3"}});
    EXPECT_EQ(Locked(), "0");
    EXPECT_EQ(Number(Ask({{"functionname", "SetUnlockedInfo"}, {"ratingInfo", "4"}}), "result_internal"),
              "0");
}

TEST_F(ParentalLock, DoesNotLockProgrammesWithinTheLimit)
{
    Begin({"--rating-limit", "17"});
    EXPECT_EQ(Locked(), "0");
}

TEST_F(ParentalLock, FactoryModeUnlocksEverything)
{
    Begin({"--rating-limit", "12", "--lock-service"});
    EXPECT_EQ(Number(Ask({{"functionname", "FlagServiceLocked"}}), "outServiceLocked"), "1");
    Ask({{"functionname", "SetUnlockedInfoWhenFactoryMode"}, {"lockState", "1"}});
    EXPECT_EQ(Locked(), "0");
    EXPECT_EQ(Number(Ask({{"functionname", "FlagServiceLocked"}}), "outServiceLocked"), "0");
    Ask({{"functionname", "SetUnlockedInfoWhenFactoryMode"}, {"lockState", "0"}});
    EXPECT_EQ(Locked(), "1");
    Ask({{"functionname", "SetUnlockedInfo"}, {"ratingInfo", "2"}});
    EXPECT_EQ(Number(Ask({{"functionname", "FlagServiceLocked"}}), "outServiceLocked"), "0");
}

} // namespace
} // namespace zviptv::test
