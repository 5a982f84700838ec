// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"

#include <json/reader.h>

#include <filesystem>
#include <fstream>

namespace zviptv::test {
namespace {

/// The simulator's answers from the sample guide, at 22:00 UTC on 28 March 2026.
class SampleGuide : public Simulator
{
protected:
    void Begin(std::vector<std::string> options = {"--guide", ZVIPTV_SAMPLE_GUIDE, "--time", "1774735200"})
    {
        std::vector<std::string> all{"--ts", ZVIPTV_SAMPLE_FILE, "--loop"};
        all.insert(all.end(), options.begin(), options.end());
        Start(all);
        m_application.Announce(GuideWord);
    }

    std::string Data(std::initializer_list<TextEntry> entries)
    {
        return m_application.Ask(GuideWord, entries).Value("data");
    }

    Json::Value JsonData(std::initializer_list<TextEntry> entries)
    {
        Json::Value json;
        std::istringstream text(Data(entries));
        text >> json;
        return json;
    }

    Application m_application;
};

TEST_F(SampleGuide, AnswersQueries)
{
    Begin();
    EXPECT_EQ(Data({{"functionname", "ExistXmlForIPG"}}), "1");
    Json::Value const present = JsonData({{"functionname", "GetPresentProgram"}, {"inID", "1"}});
    EXPECT_EQ(present["title"], "Cellar Door");
    EXPECT_EQ(present["start_time"], 1774733400);
    std::string const event = present["event_id"].asString();
    EXPECT_EQ(JsonData({{"functionname", "FindProgram"}, {"inID", "1"}, {"eventID", event}})["title"],
              "Cellar Door");
    EXPECT_EQ(JsonData({{"functionname", "GetRating"}, {"eventID", event}})["minimum_age"], 17);
    EXPECT_EQ(JsonData({{"functionname", "GetGenre"}, {"eventID", event}})[1], "Horror");
    std::string const id =
        R"({"duration":10800,"event_id":)" + event + R"(,"service_id":"1","start_time":1774733400})";
    EXPECT_EQ(JsonData({{"functionname", "GetProgramIPG"}, {"inID", id}, {"program", "1"}})["title"],
              "Night Trains");
    EXPECT_EQ(JsonData({{"functionname", "GetProgramIPG"}, {"inID", id}, {"program", "-1"}})["title"],
              "Late Match");
    EXPECT_EQ(Data({{"functionname", "GetPresentProgram"}, {"inID", "4711"}}), "");
}

TEST_F(SampleGuide, KeepsAListForEachApplication)
{
    Begin();
    std::initializer_list<TextEntry> const window = {{"functionname", "GetProgramListSize"},
                                                     {"inID", "1"},
                                                     {"startTime", "1774733400"},
                                                     {"duration", "10801"}};
    EXPECT_EQ(Data(window), "2");
    Application other;
    other.Announce(GuideWord);
    other.Ask(GuideWord,
              {{"functionname", "GetProgramListSize"}, {"inID", "3"}, {"startTime", "0"}, {"duration", "1"}});
    EXPECT_EQ(JsonData({{"functionname", "GetProgram"}, {"index", "1"}})["title"], "Night Trains");
    EXPECT_EQ(Data({{"functionname", "GetProgram"}, {"index", "2"}}), "");
    EXPECT_EQ(other.Ask(GuideWord, {{"functionname", "GetProgram"}, {"index", "0"}}).Value("data"), "");
    EXPECT_EQ(JsonData({{"functionname", "GetProgramList"},
                        {"inID", "1"},
                        {"startTime", "1774733400"},
                        {"duration", "10801"}})
                  .size(),
              2U);
}

TEST_F(SampleGuide, LoadsAnotherGuideAndKeepsItsGuideOnError)
{
    Begin({});
    EXPECT_EQ(Data({{"functionname", "ExistXmlForIPG"}}), "0");
    EXPECT_EQ(Data({{"functionname", "CloneUSBToTV"}, {"path", ZVIPTV_SAMPLE_GUIDE}}), "1");
    std::string const broken = m_bus.Directory() + "/broken.xml";
    std::ofstream(broken) << "<tv><programme></tv>";
    for (std::string const& path : {broken, std::string("/no/such/file"), std::string()}) {
        EXPECT_EQ(Data({{"functionname", "CloneUSBToTV"}, {"path", path}}), "0") << path;
    }
    EXPECT_EQ(JsonData({{"functionname", "GetProgram"}, {"index", "0"}})["title"], "Evening Report");
}

TEST_F(SampleGuide, ReportsWhatIsWrongWithAGuide)
{
    ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--guide", ZVIPTV_SIM});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{1, 0}));
    EXPECT_THAT(process.Errors(), testing::HasSubstr(std::string(ZVIPTV_SIM) + ":1:"));
}

TEST_F(SampleGuide, ReportsOmittedEntries)
{
    std::string const guide = m_bus.Directory() + "/odd.xml";
    std::ofstream(guide)
        << "<tv><channel id='1'/>\n<programme start='20260399' channel='1'><title>x</title></programme></tv>";
    ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--guide", guide, "--", "true"});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0}));
    EXPECT_THAT(process.Errors(), testing::HasSubstr("zviptv-sim: " + guide + ": line 2: "));
}

TEST_F(Simulator, ShowsEveryRequest)
{
    ChildProcess& simulator = Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--json"});
    Application application;
    application.Announce("PLAYERCONTROL");
    application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}});
    ASSERT_TRUE(simulator.WaitForOutput("\"MuteAudio\"", Patience));
    std::string const output = simulator.Output();
    std::istringstream lines(output);
    std::string line;
    Json::Value json;
    do {
        ASSERT_TRUE(std::getline(lines, line)) << output;
        std::istringstream(line) >> json;
    } while (json["event"] != "request");
    EXPECT_EQ(json["endpoint"], "PLAYERCONTROL");
    EXPECT_EQ(json["application"], application.Peer().Name());
    EXPECT_EQ(json["request"]["onoff"], "1");
    EXPECT_EQ(json["reply"]["result_internal"], "1");
    ASSERT_TRUE(simulator.WaitForOutput("\"event\":\"status\"", Patience));
    EXPECT_THAT(simulator.Output(), testing::HasSubstr("\"clients\":1"));
}

/// Teletext of a broadcast: captions are the data units that carry subtitles.
TEST_F(Simulator, SendsCaptionsOfTeletext)
{
    std::string const capture = ZVIPTV_MEDIA_DIR "/dvb-4-audio-teletext.ts";
    if (!std::filesystem::exists(capture)) {
        GTEST_SKIP() << "no broadcast captures in " << ZVIPTV_MEDIA_DIR;
    }
    Start({"--ts", capture, "--loop", "--speed", "4", "--pes", "none"});
    Application application;
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestCaptionCB"}, {"on", "1"}});
    auto const seen = application.Peer().WaitFor(
        [](WireMessage const& message) { return message.Value("functionname") == "CaptionCB"; });
    ASSERT_TRUE(seen);
    std::string const data = seen->Value("captionData");
    EXPECT_EQ(seen->Value("captionType"), "4");
    EXPECT_EQ(seen->Value("captionDataSize"), std::to_string(data.size()));
    EXPECT_EQ(data.size() % 46, 0U);
    EXPECT_EQ(data.substr(0, 2), std::string("\x03\x2C", 2));
    EXPECT_FALSE(seen->Has("pesData"));
}

} // namespace
} // namespace zviptv::test
