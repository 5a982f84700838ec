// SPDX-License-Identifier: MIT
#include "FaultTest.h"

#include <cctype>
#include <set>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

constexpr char Known[] = "use * for all requests, ";

std::set<std::string> Words(std::string const& text)
{
    std::set<std::string> words;
    std::string word;
    for (char const character : text + '\n') {
        if (std::isalpha(static_cast<unsigned char>(character)) != 0) {
            word += character;
        } else if (!word.empty()) {
            words.insert(word);
            word.clear();
        }
    }
    return words;
}

std::string Refusal(std::string const& fault)
{
    ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--fault", fault});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{2, 0})) << fault;
    return process.Errors();
}

TEST(FaultMethods, UnknownToTheServiceAreRefused)
{
    for (std::string const method : {"MuteAdio", "muteaudio", "pescb", "SubscribeForPES", "Mute*", "**"}) {
        EXPECT_THAT(Refusal(method + "=drop"),
                    HasSubstr("zviptv-sim: cannot use the fault '" + method + "=drop': unknown function '" +
                              method + "'; " + Known))
            << method;
    }
}

TEST(FaultMethods, AreAllRequestsAndNotificationsOfTheProtocol)
{
    std::set<std::string> const wanted =
        Words("SetCurrentAudioByIndex SetAudioFormat SetDigitalDualSound SetCurrentTTX SetCurrentHybridSBT "
              "GetSTCCount SetCurrentISDBText SetCurrentISDBTextService GetCaptionDataMode "
              "GetDefaultCaptionService MuteAudio MuteVideo GetResolution SetAppID GetSourceState "
              "GetFirstPTS GetAudioFormat GetDigitalDualSound GetCurrentAudioInfo SizeOfAudio GetAudio "
              "SizeOfTTX GetTTX GetCurrentTTX SizeOfHybridSBT GetHybridSBT CheckHardOfHearingSBT "
              "GetPreferredHybridSBT GetCurrentHybridSBT GetPreferredTTXSubtitle SizeOfISDBText GetISDBText "
              "GetCurrentISDBText GetCaptionLanguage GetRatingInfo SetUnlockedInfo GetRatingLockState "
              "UnMuteByRatingPin SetUnlockedInfoWhenFactoryMode FlagServiceLocked requestCaptionCB "
              "requestPESCB ExistXmlForIPG GetProgramListSize GetProgram GetProgramIPG GetPresentProgram "
              "FindProgram GetRating GetGenre GetProgramList CloneUSBToTV PESCB CaptionCB or Announcement");
    ASSERT_EQ(wanted.size(), 52U + 3U + 1U);

    std::string const refusal = Refusal("x=drop");
    std::string const list = refusal.substr(refusal.find(Known) + std::string(Known).size());
    EXPECT_EQ(Words(list), wanted);
}

TEST_F(FaultInjection, OfAllMethodsApplyToEveryEndpoint)
{
    Begin({"*=result:7"});
    for (auto const& [type, functions] : std::vector<std::pair<std::string, std::vector<std::string>>>{
             {"PLAYERCONTROL", {"MuteAudio", "GetSTCCount"}},
             {"BROADCASTDATA", {"SizeOfAudio", "GetTTX"}},
             {"IPTVDATASUBSCRIBER", {"requestPESCB", "requestCaptionCB"}},
             {"IPGUTIL", {"ExistXmlForIPG", "CloneUSBToTV"}}}) {
        m_application.Announce(type);
        for (std::string const& function : functions) {
            EXPECT_EQ(Number(Ask(function, type), "result_internal"), "7") << function;
        }
    }
}

TEST_F(FaultInjection, OfAMethodPrecedeThoseOfAll)
{
    Begin({"MuteAudio=result:7", "GetSourceState=delay:1", "*=error", "SetAppID=missing:result_internal"});
    EXPECT_EQ(Number(Ask("MuteAudio"), "result_internal"), "7");
    EXPECT_FALSE(Ask("SetAppID").Has("result_internal"));
    EXPECT_EQ(Ask("MuteVideo").errorName, InjectedError);
    EXPECT_EQ(Ask("GetSourceState").errorName, InjectedError) << "a delay contradicts delays alone";
}

TEST_F(FaultInjection, TheLastOfEqualFaultsApplies)
{
    Begin({"MuteAudio=result:5", "MuteAudio=result:6", "MuteVideo=drop", "MuteVideo=result:3",
           "GetSourceState=result:3", "GetSourceState=error", "GetFirstPTS=garbage:firstPTS",
           "GetFirstPTS=missing:firstPTS", "GetResolution=delay:600000", "GetResolution=delay:1",
           "SetAppID=error", "SetAppID=drop"});
    EXPECT_EQ(Number(Ask("MuteAudio"), "result_internal"), "6");
    EXPECT_EQ(Number(Ask("MuteVideo"), "result_internal"), "3");
    EXPECT_EQ(Ask("GetSourceState").errorName, InjectedError);
    WireMessage const pts = Ask("GetFirstPTS");
    EXPECT_FALSE(Number(pts, "timebaseden").empty());
    EXPECT_FALSE(pts.Has("firstPTS"));
    EXPECT_TRUE(Ask("GetResolution").Has("resolution"));
    EXPECT_EQ(AskWithShortTimeout("SetAppID").errorName, NoReply);
}

TEST_F(FaultInjection, OfDifferentKeysCombine)
{
    Begin({"*=result:9", "GetFirstPTS=missing:timebasenum", "GetFirstPTS=garbage:firstPTS",
           "GetFirstPTS=short:timebaseden", "MuteAudio=short:result_internal", "*=garbage:stcCount"});
    WireMessage const pts = Ask("GetFirstPTS");
    EXPECT_EQ(Number(pts, "result_internal"), "9");
    EXPECT_FALSE(pts.Has("timebasenum"));
    EXPECT_EQ(pts.Value("firstPTS"), "garbage");
    EXPECT_EQ(pts.Value("timebaseden"), "90") << "half of 90000, the odd letter left out";
    WireMessage const muted = Ask("MuteAudio");
    EXPECT_TRUE(muted.Has("result_internal"));
    EXPECT_EQ(muted.Value("result_internal"), "");
    EXPECT_EQ(Number(Ask("MuteVideo"), "result_internal"), "9");
}

TEST_F(FaultInjection, ADelayCombinesWithAllOthers)
{
    Begin({"*=delay:300", "MuteAudio=error", "MuteVideo=result:5", "GetSourceState=missing:sourcestate",
           "SetAppID=drop"});
    auto const begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Ask("MuteAudio").errorName, InjectedError);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(300));
    EXPECT_EQ(Number(Ask("MuteVideo"), "result_internal"), "5");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(600));
    EXPECT_FALSE(Ask("GetSourceState").Has("sourcestate"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(900));
    EXPECT_EQ(AskWithShortTimeout("SetAppID").errorName, NoReply);
    for (char const* const note : {"-> no reply (", " ms) fault: delay:300 error\n",
                                   " ms) fault: delay:300\n", " ms) fault: drop\n"}) {
        EXPECT_TRUE(m_simulator->WaitForErrors(note, Patience)) << note << m_simulator->Errors();
    }
}

TEST_F(FaultInjection, TheRequestTakesEffectNevertheless)
{
    Begin({"SetCurrentAudioByIndex=error", "SetCurrentTTX=drop", "SetCurrentHybridSBT=result:0"});
    EXPECT_EQ(Ask("SetCurrentAudioByIndex").errorName, InjectedError);
    EXPECT_EQ(AskWithShortTimeout("SetCurrentTTX").errorName, NoReply);
    EXPECT_EQ(Number(Ask("SetCurrentHybridSBT"), "result_internal"), "0");
    m_application.Announce("BROADCASTDATA");
    for (char const* const function : {"GetCurrentAudioInfo", "GetCurrentTTX", "GetCurrentHybridSBT"}) {
        EXPECT_EQ(Number(Ask(function, "BROADCASTDATA"), "index"), "1") << function;
    }
}

} // namespace
} // namespace zviptv::test
