// SPDX-License-Identifier: MIT
#include "Crowd.h"

#include <set>

namespace zviptv::test {
namespace {

using Warnings = std::vector<std::string>;

/// The simulator with its log as JSON.
class RequestCheck : public Simulator
{
protected:
    void SetUp() override { Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--json"}); }

    /// The lines of requests, when the simulator has ended.
    std::vector<Json::Value> Requests()
    {
        m_simulator->Signal(SIGTERM);
        EXPECT_EQ(m_simulator->Wait(Patience), (ExitStatus{0, 0}));
        std::vector<Json::Value> requests;
        for (Json::Value const& line : JsonLines(m_simulator->Output())) {
            if (line["event"] == "request") {
                requests.push_back(line);
            }
        }
        return requests;
    }

    /// The warnings about each of these requests to an endpoint.
    std::vector<Warnings> WarningsOf(std::string const& type,
                                     std::initializer_list<std::initializer_list<TextEntry>> requests)
    {
        Application application;
        application.Announce(type);
        for (std::initializer_list<TextEntry> const request : requests) {
            EXPECT_EQ(application.Ask(type, request).kind, WireKind::Reply);
        }
        std::vector<Warnings> all;
        for (Json::Value const& line : Requests()) {
            Warnings& warnings = all.emplace_back();
            for (Json::Value const& warning : line["warnings"]) {
                warnings.push_back(warning.asString());
            }
        }
        return all;
    }
};

TEST_F(RequestCheck, WarnsOfUnknownFunctions)
{
    EXPECT_EQ(WarningsOf("BROADCASTDATA", {{{"functionname", "SizeOfAudio"}, {"handleID", "256"}},
                                           {{"functionname", "Fly"}, {"handleID", "256"}},
                                           {{"functionname", "MuteAudio"}, {"onoff", "1"}},
                                           {{"functionname", "CaptionCB"}},
                                           {{"handleID", "256"}}}),
              (std::vector<Warnings>{{},
                                     {"unknown function Fly"},
                                     {"MuteAudio is a function of PLAYERCONTROL"},
                                     {"unknown function CaptionCB"},
                                     {"missing key functionname"}}));
}

TEST_F(RequestCheck, WarnsOfMissingAndUnexpectedKeys)
{
    EXPECT_EQ(WarningsOf("PLAYERCONTROL",
                         {{{"functionname", "SetAudioFormat"}, {"encodeType", "1"}},
                          {{"functionname", "MuteVideo"}, {"handleID", "256"}, {"onOff", "1"}},
                          {{"functionname", "SetAppID"}},
                          {{"functionname", "SetAppID"}, {"AppID", "org.example"}, {"handleID", "256"}},
                          {{"functionname", "GetSTCCount"}, {"handleID", "256"}, {"stcCount", "1"}}}),
              (std::vector<Warnings>{{"missing key handleID", "missing key isPreferred"},
                                     {"missing key onoff", "unexpected key onOff"},
                                     {},
                                     {"unexpected key handleID"},
                                     {"unexpected key stcCount"}}));
}

TEST_F(RequestCheck, WarnsOnceOfDuplicateKeys)
{
    EXPECT_EQ(
        WarningsOf(
            "PLAYERCONTROL",
            {{{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}, {"onoff", "0"}},
             {{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}, {"functionname", "Fly"}},
             {{"functionname", "GetSTCCount"}, {"handleID", "256"}, {"x", "1"}, {"x", "1"}, {"x", "1"}}}),
        (std::vector<Warnings>{
            {"repeated key onoff"}, {"repeated key functionname"}, {"unexpected key x", "repeated key x"}}));
}

TEST_F(RequestCheck, WarnsOfMalformedNumbers)
{
    EXPECT_EQ(WarningsOf("PLAYERCONTROL",
                         {{{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "2"}},
                          {{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "true"}},
                          {{"functionname", "MuteAudio"}, {"handleID", "-1"}, {"onoff", "0"}},
                          {{"functionname", "SetCurrentTTX"}, {"handleID", "1"}, {"index", "4294967295"}},
                          {{"functionname", "SetCurrentTTX"}, {"handleID", "1"}, {"index", "4294967296"}},
                          {{"functionname", "SetCurrentTTX"}, {"handleID", "1"}, {"index", "1.0"}},
                          {{"functionname", "SetDigitalDualSound"}, {"handleID", "1"}, {"mode", "-7"}},
                          {{"functionname", "SetDigitalDualSound"}, {"handleID", "1"}, {"mode", "STEREO"}}}),
              (std::vector<Warnings>{{"onoff is not of the type flag"},
                                     {"onoff is not of the type flag"},
                                     {"handleID is not of the type u32"},
                                     {},
                                     {"index is not of the type u32"},
                                     {"index is not of the type u32"},
                                     {},
                                     {"mode is not of the type EZVMultiSoundMode"}}));
}

TEST_F(RequestCheck, WarnsOfMalformedProgrammeIds)
{
    std::string const number = "18446744073709551616"; // 2^64
    EXPECT_EQ(
        WarningsOf(
            "IPGUTIL",
            {{{"functionname", "GetProgramIPG"},
              {"inID",
               R"({"duration": 0, "event_id": 65535, "service_id": "18446744073709551615", "start_time": 1})"},
              {"program", "-1"}},
             {{"functionname", "GetProgramIPG"},
              {"inID", R"({"duration": 0, "event_id": 65536, "service_id": "1", "start_time": 1})"},
              {"program", "0"}},
             {{"functionname", "GetProgramIPG"},
              {"inID", R"({"duration": 0, "event_id": 1, "service_id": 1, "start_time": 1})"},
              {"program", "0"}},
             {{"functionname", "GetProgramIPG"}, {"inID", "7"}, {"program", "0"}},
             {{"functionname", "GetPresentProgram"}, {"inID", number}}}),
        (std::vector<Warnings>{{},
                               {"inID is not of the type IPGProgramId"},
                               {"inID is not of the type IPGProgramId"},
                               {"inID is not of the type IPGProgramId"},
                               {"inID is not of the type u64"}}));
}

TEST_F(RequestCheck, FindsNothingInTheRequestsOfTheLibrary)
{
    std::vector<std::vector<std::string>> const commands{
        {"SetCurrentAudioByIndex", "1"},
        {"SetAudioFormat", "AC3", "1"},
        {"SetDigitalDualSound", "1"},
        {"SetCurrentTTX", "0"},
        {"SetCurrentHybridSBT", "0"},
        {"GetSTCCount"},
        {"SetCurrentISDBText", "0", "0"},
        {"SetCurrentISDBTextService", "0", "48"},
        {"GetCaptionDataMode"},
        {"GetDefaultCaptionService"},
        {"MuteAudio", "true"},
        {"MuteVideo", "false"},
        {"GetResolution"},
        {"SetAppID"},
        {"SetAppID", "x"},
        {"GetSourceState"},
        {"GetFirstPTS"},
        {"GetAudioFormat"},
        {"GetDigitalDualSound"},
        {"GetCurrentAudioInfo"},
        {"SizeOfAudio"},
        {"GetAudio", "1"},
        {"SizeOfTTX"},
        {"GetTTX", "0"},
        {"GetCurrentTTX"},
        {"SizeOfHybridSBT"},
        {"GetHybridSBT", "0"},
        {"CheckHardOfHearingSBT"},
        {"GetPreferredHybridSBT"},
        {"GetCurrentHybridSBT"},
        {"GetPreferredTTXSubtitle"},
        {"SizeOfISDBText", "0"},
        {"GetISDBText", "0", "0"},
        {"GetCurrentISDBText", "0"},
        {"GetCaptionLanguage", "1"},
        {"GetRatingInfo"},
        {"SetUnlockedInfo", "1"},
        {"GetRatingLockState"},
        {"UnMuteByRatingPin"},
        {"SetUnlockedInfoWhenFactoryMode", "1"},
        {"FlagServiceLocked"},
        {"ExistXmlForIPG"},
        {"GetProgramListSize", "1", "1774735200", "14400"},
        {"GetProgram", "0"},
        {"GetProgram", "18446744073709551615", "65535", "4294967295", "0", "PREVIOUS"},
        {"GetPresentProgram", "1"},
        {"FindProgram", "1", "1"},
        {"GetRating", "1"},
        {"GetGenre", "1"},
        {"GetProgramList", "1", "1774735200", "3600"},
        {"CloneUSBToTV", "/media/usb"},
        {"CloneUSBToTV", ""}};
    for (std::vector<std::string> const& words : commands) {
        std::vector<std::string> command{ZVIPTVCTL, "call"};
        command.insert(command.end(), words.begin(), words.end());
        EXPECT_TRUE(ChildProcess(command).Wait(Patience)) << words.front();
    }
    EXPECT_TRUE(ChildProcess({ZVIPTVCTL, "pes", "--count", "1"}).Wait(Patience));
    EXPECT_TRUE(ChildProcess({ZVIPTVCTL, "caption", "--count", "1"}).Wait(Patience));

    std::set<std::string> functions;
    for (Json::Value const& request : Requests()) {
        functions.insert(request["request"]["functionname"].asString());
        EXPECT_TRUE(request["warnings"].isArray() && request["warnings"].empty()) << request.toStyledString();
    }
    EXPECT_EQ(functions.size(), 52U);
}

TEST_F(Simulator, WritesWarningsToTheLog)
{
    Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop"});
    Application application;
    application.Announce("PLAYERCONTROL");
    EXPECT_EQ(
        Number(application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"onoff", "7"}, {"x", "1"}}),
               "result_internal"),
        "1");
    EXPECT_TRUE(m_simulator->WaitForErrors(" ms)\nwarning: " + application.Peer().Name() +
                                               " PLAYERCONTROL MuteAudio: missing key handleID; onoff is not "
                                               "of the type flag; unexpected key x\n",
                                           Patience))
        << m_simulator->Errors();
}

TEST_F(RequestCheck, ShowsShortTextsEscapedInJson)
{
    Application application;
    application.Announce("PLAYERCONTROL");
    application.Ask("PLAYERCONTROL", {{"functionname", std::string("MuteAudio\0", 10)},
                                      {"AppID", "a\\b\n\x7f\xc2\x9b"
                                                "31mé"},
                                      {"k\x1b\x7f", std::string(15, '\1')},
                                      {"x", std::string(16, '\1')},
                                      {"y", std::string(61, 'y')}});
    Json::Value const request = Requests().at(0);
    EXPECT_EQ(request["request"]["functionname"].asString(), "MuteAudio\\x00");
    EXPECT_EQ(request["request"]["AppID"].asString(), "a\\\\b\\n\\x7f\\xc2\\x9b31mé");
    EXPECT_EQ(request["request"]["k\\x1b\\x7f"].asString().substr(0, 8), "\\x01\\x01");
    EXPECT_EQ(request["request"]["x"].asString(), "<16 bytes>");
    EXPECT_EQ(request["request"]["y"].asString(), "<61 bytes>");
    EXPECT_EQ(request["warnings"][0].asString(), "unknown function MuteAudio\\x00");
}

TEST_F(Simulator, KeepsControlCharactersOutOfTheLog)
{
    Start({"--ts", ZVIPTV_SAMPLE_FILE, "--loop"});
    Application application;
    application.Announce("PLAYERCONTROL");
    application.Ask("PLAYERCONTROL", {{"functionname", "Mute\x1b[2J"}, {"k\xc2\x9b", "1"}});
    EXPECT_TRUE(
        m_simulator->WaitForErrors(" PLAYERCONTROL Mute\\x1b[2J: unknown function Mute\\x1b[2J\n", Patience))
        << m_simulator->Errors();
    application.Announce("IPGUTIL");
    application.Ask("IPGUTIL", {{"functionname", "CloneUSBToTV"}, {"path", "/no\n\x1b[2J\xc2\x9b"}});
    EXPECT_TRUE(
        m_simulator->WaitForErrors("zviptv-sim: cannot load the guide: /no\\n\\x1b[2J\\xc2\\x9b: ", Patience))
        << m_simulator->Errors();
    EXPECT_THAT(m_simulator->Errors(),
                testing::Not(testing::AnyOf(testing::HasSubstr("\x1b"), testing::HasSubstr("\xc2\x9b"))));
}

} // namespace
} // namespace zviptv::test
