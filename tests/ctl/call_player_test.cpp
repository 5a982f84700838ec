// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

constexpr char const* PlayerWord = "PLAYERCONTROL";

WireEntries Accepted()
{
    return Entries({{"result_internal", "1"}});
}

// 1920 x 1080, 25/1, 16:9, interlaced
std::string Resolution()
{
    return FromHex(
        "80 07 00 00 38 04 00 00 19 00 00 00 01 00 00 00 10 00 09 00 01 00 00 00 00 00 00 00 00 00 00 00");
}

std::vector<CallCase> PlayerCases()
{
    return {
        {{"SetCurrentAudioByIndex", "-1"},
         PlayerWord,
         Entries({{"functionname", "SetCurrentAudioByIndex"}, {"handleID", "256"}, {"index", "-1"}}),
         Accepted(),
         "result: true\n"},
        {{"SetAudioFormat", "AC3", "on"},
         PlayerWord,
         Entries({{"functionname", "SetAudioFormat"},
                  {"handleID", "256"},
                  {"encodeType", "2"},
                  {"isPreferred", "1"}}),
         Accepted(),
         "result: true\n"},
        {{"SetDigitalDualSound", "ZV_MULTI_SOUND_SUB"},
         PlayerWord,
         Entries({{"functionname", "SetDigitalDualSound"}, {"handleID", "256"}, {"mode", "2"}}),
         Accepted(),
         "result: true\n"},
        {{"SetCurrentTTX", "4294967295"},
         PlayerWord,
         Entries({{"functionname", "SetCurrentTTX"}, {"handleID", "256"}, {"index", "4294967295"}}),
         Accepted(),
         "result: true\n"},
        {{"SetCurrentHybridSBT", "0x10"},
         PlayerWord,
         Entries({{"functionname", "SetCurrentHybridSBT"}, {"handleID", "256"}, {"index", "16"}}),
         Accepted(),
         "result: true\n"},
        {{"GetSTCCount"},
         PlayerWord,
         Entries({{"functionname", "GetSTCCount"}, {"handleID", "256"}}),
         Entries({{"result_internal", "1"}, {"stcCount", "18446744073709551615"}}),
         "result: true\nstc: 18446744073709551615\n"},
        {{"SetCurrentISDBText", "superimpose", "3"},
         PlayerWord,
         Entries(
             {{"functionname", "SetCurrentISDBText"}, {"handleID", "256"}, {"mode", "1"}, {"index", "3"}}),
         Accepted(),
         "result: true\n"},
        {{"SetCurrentISDBTextService", "0", "0x30"},
         PlayerWord,
         Entries({{"functionname", "SetCurrentISDBTextService"},
                  {"handleID", "256"},
                  {"mode", "0"},
                  {"compTag", "48"}}),
         Accepted(),
         "result: true\n"},
        {{"GetCaptionDataMode"},
         PlayerWord,
         Entries({{"functionname", "GetCaptionDataMode"}, {"handleID", "256"}}),
         Entries({{"result_internal", "1"}, {"mode", "-1"}}),
         "result: true\nmode: -1 (UNKNOWN)\n"},
        {{"GetDefaultCaptionService"},
         PlayerWord,
         Entries({{"functionname", "GetDefaultCaptionService"}, {"handleID", "256"}}),
         Entries({{"result_internal", "1"}, {"service", "4"}}),
         "result: true\nservice: 4\n"},
        {{"MuteAudio", "true"},
         PlayerWord,
         Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}),
         Accepted(),
         "result: true\n"},
        {{"MuteVideo", "off"},
         PlayerWord,
         Entries({{"functionname", "MuteVideo"}, {"handleID", "256"}, {"onoff", "0"}}),
         Accepted(),
         "result: true\n"},
        {{"GetResolution"},
         PlayerWord,
         Entries({{"functionname", "GetResolution"}, {"handleID", "256"}}),
         Entries({{"result_internal", "1"}, {"resolution", "3"}, {"resolutioninfo", Resolution()}}),
         "result: true\nres: 3 (FHD)\ninfo.width: 1920\ninfo.height: 1080\ninfo.frameRateNumerator: 25\n"
         "info.frameRateDenominator: 1\ninfo.aspectWidth: 16\ninfo.aspectHeight: 9\ninfo.interlaced: 1\n"},
        {{"SetAppID", "com.example.app"},
         PlayerWord,
         Entries({{"functionname", "SetAppID"}, {"AppID", "com.example.app"}}),
         Accepted(),
         "result: true\n"},
        {{"SetAppID"}, PlayerWord, Entries({{"functionname", "SetAppID"}}), Accepted(), "result: true\n"},
        {{"GetSourceState"},
         PlayerWord,
         Entries({{"functionname", "GetSourceState"}, {"handleID", "256"}}),
         Entries({{"result_internal", "1"}, {"sourcestate", "2"}}),
         "result: true\nstate: 2 (PLAYING)\n"},
        {{"GetFirstPTS"},
         PlayerWord,
         Entries({{"functionname", "GetFirstPTS"}, {"handleID", "256"}}),
         Entries({{"result_internal", "1"},
                  {"firstPTS", "133200"},
                  {"timebaseden", "90000"},
                  {"timebasenum", "1"},
                  {"currenttime", "12"}}),
         "result: true\npts: 133200\na: 90000\nb: 1\nnow: 12\n"},
    };
}

using PlayerCallTest = CallTest;

TEST_P(PlayerCallTest, SendsTheRequestAndPrintsTheReply)
{
    Check();
}

INSTANTIATE_TEST_SUITE_P(Methods, PlayerCallTest, testing::ValuesIn(PlayerCases()), NameOfCase);

} // namespace
} // namespace zviptv::test
