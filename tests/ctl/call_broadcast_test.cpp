// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

constexpr char const* BroadcastWord = "BROADCASTDATA";
constexpr char const* English = "6647399"; // 0x656e67
constexpr char const* Korean = "7040882";  // 0x6b6f72

WireEntries Request(std::string const& function, WireEntries const& more = {})
{
    WireEntries request = Entries({{"functionname", function}, {"handleID", "256"}});
    request.insert(request.end(), more.begin(), more.end());
    return request;
}

WireEntries Reply(std::initializer_list<TextEntry> entries)
{
    WireEntries reply = Entries({{"result_internal", "1"}});
    WireEntries const more = Entries(entries);
    reply.insert(reply.end(), more.begin(), more.end());
    return reply;
}

// eng, E-AC3, pid 0x0101, tag 5, type 3, 48000 Hz, 384000 bit/s, 6 channels, stream type 0x87
std::string Audio()
{
    return FromHex(
        "67 6e 65 00 03 00 00 00 01 01 05 03 80 bb 00 00 00 dc 05 00 06 00 87 00 00 00 00 00 00 00 00 00");
}

// deu, pid 0x1abc, page 888, type 2, tag 7
std::string Teletext()
{
    return FromHex("75 65 64 00 bc 1a 08 88 02 07 00 00 00 00 00 00");
}

// fra, DVB, pid 0x0201, pages 1 and 2, type 0x20, hard of hearing, tag 9
std::string Subtitle()
{
    return FromHex("61 72 66 00 01 00 00 00 01 02 01 00 02 00 20 01 00 00 09 00 00 00 00 00");
}

// jpn, superimpose, pid 0x0130, component 8, tag 0x38, language 1
std::string IsdbText()
{
    return FromHex("6e 70 6a 00 01 00 00 00 30 01 08 00 38 01 00 00");
}

std::string const TeletextLines = "ttx.language: deu\nttx.pid: 0x1abc\nttx.magazine: 8\nttx.page: 0x88\n"
                                  "ttx.type: 2\nttx.componentTag: 0x07\n";
std::string const SubtitleLines =
    "subtitle.language: fra\nsubtitle.kind: 1 (DVB)\nsubtitle.pid: 0x0201\n"
    "subtitle.compositionPage: 1\nsubtitle.ancillaryPage: 2\nsubtitle.type: 0x20\n"
    "subtitle.hardOfHearing: 1\nsubtitle.magazine: 0\nsubtitle.page: 0x00\n"
    "subtitle.componentTag: 0x09\n";

std::vector<CallCase> TrackCases()
{
    return {
        {{"GetAudioFormat"},
         BroadcastWord,
         Request("GetAudioFormat"),
         Reply({{"encodeType", "99"}}),
         "result: true\nencodeType: 99\n"},
        {{"GetDigitalDualSound"},
         BroadcastWord,
         Request("GetDigitalDualSound"),
         Reply({{"currentMode", FromHex("01 00 00 00 01 00 00 00")},
                {"nextMode", FromHex("02 00 00 00 00 00 00 00")}}),
         "result: true\ncurrentMode.mode: 1 (MAIN)\ncurrentMode.available: 1\n"
         "nextMode.mode: 2 (SUB)\nnextMode.available: 0\n"},
        {{"GetCurrentAudioInfo"},
         BroadcastWord,
         Request("GetCurrentAudioInfo"),
         Reply({{"landCode", English}, {"index", "-2"}}),
         "result: true\nlanguage: eng\nindex: -2\n"},
        {{"SizeOfAudio"},
         BroadcastWord,
         Request("SizeOfAudio"),
         Reply({{"size", "-1"}}),
         "result: true\nsize: 4294967295\n"},
        {{"GetAudio", "3"},
         BroadcastWord,
         Request("GetAudio", Entries({{"index", "3"}})),
         Reply({{"audio", Audio()}}),
         "result: true\naudio.language: eng\naudio.encoding: 3 (EAC3)\naudio.pid: "
         "0x0101\naudio.componentTag: 0x05\n"
         "audio.audioType: 3\naudio.sampleRate: 48000\naudio.bitRate: 384000\naudio.channels: 6\n"
         "audio.dualMono: 0\naudio.streamType: 0x87\n"},
        {{"SizeOfTTX"},
         BroadcastWord,
         Request("SizeOfTTX"),
         Reply({{"size", "7"}}),
         "result: true\nsize: 7\n"},
        {{"GetTTX", "1"},
         BroadcastWord,
         Request("GetTTX", Entries({{"index", "1"}})),
         Reply({{"ttx", Teletext()}}),
         "result: true\n" + TeletextLines},
        {{"GetCurrentTTX"},
         BroadcastWord,
         Request("GetCurrentTTX"),
         Reply({{"landCode", "0"}, {"index", "5"}}),
         "result: true\nlanguage: 0 (UNKNOWN)\nindex: 5\n"},
        {{"SizeOfHybridSBT"},
         BroadcastWord,
         Request("SizeOfHybridSBT"),
         Reply({{"size", "2"}}),
         "result: true\nsize: 2\n"},
        {{"GetHybridSBT", "2"},
         BroadcastWord,
         Request("GetHybridSBT", Entries({{"index", "2"}})),
         Reply({{"landCode", Korean}, {"hybridSbt", Subtitle()}}),
         "result: true\nlanguage: kor\n" + SubtitleLines},
        {{"CheckHardOfHearingSBT"},
         BroadcastWord,
         Request("CheckHardOfHearingSBT"),
         Reply({{"exists", "2"}}),
         "result: true\nexists: true\n"},
        {{"GetPreferredHybridSBT"},
         BroadcastWord,
         Request("GetPreferredHybridSBT"),
         Reply({{"landCode", English}, {"hybridSbt", Subtitle()}}),
         "result: true\nlanguage: eng\n" + SubtitleLines},
        {{"GetCurrentHybridSBT"},
         BroadcastWord,
         Request("GetCurrentHybridSBT"),
         Reply({{"landCode", English}, {"index", "1"}}),
         "result: true\nlanguage: eng\nindex: 1\n"},
        {{"GetPreferredTTXSubtitle"},
         BroadcastWord,
         Request("GetPreferredTTXSubtitle"),
         Reply({{"ttxSubtitle", Teletext()}}),
         "result: true\n" + TeletextLines},
    };
}

std::vector<CallCase> TextAndLockCases()
{
    return {
        {{"SizeOfISDBText", "CAPTION"},
         BroadcastWord,
         Request("SizeOfISDBText", Entries({{"mode", "0"}})),
         Reply({{"size", "4"}}),
         "result: true\nsize: 4\n"},
        {{"GetISDBText", "1", "6"},
         BroadcastWord,
         Request("GetISDBText", Entries({{"mode", "1"}, {"index", "6"}})),
         Reply({{"isdbText", IsdbText()}}),
         "result: true\ntext.language: jpn\ntext.type: 1 (SUPERIMPOSE)\ntext.pid: 0x0130\n"
         "text.dataComponent: 0x0008\ntext.componentTag: 0x38\ntext.languageTag: 1\n"},
        {{"GetCurrentISDBText", "superimpose"},
         BroadcastWord,
         Request("GetCurrentISDBText", Entries({{"mode", "1"}})),
         Reply({{"landCode", English}, {"index", "0"}}),
         "result: true\nlanguage: eng\nindex: 0\n"},
        {{"GetCaptionLanguage", "6"},
         BroadcastWord,
         Request("GetCaptionLanguage", Entries({{"service", "6"}})),
         Reply({{"landCode", Korean}, {"koreanCode", "K"}}),
         "result: true\nlanguage: kor\nkoreanCode: K\n"},
        {{"GetRatingInfo"},
         BroadcastWord,
         Request("GetRatingInfo"),
         Reply({{"ratingInfoSize", "2"}, {"ratingInfo", FromHex("00 00 0c 01 02 03")}}),
         "result: true\nratings: 2\nratings[0].region: 0\nratings[0].dimension: 0\nratings[0].value: 12\n"
         "ratings[1].region: 1\nratings[1].dimension: 2\nratings[1].value: 3\n"},
        {{"SetUnlockedInfo", "UNLOCKED_ALL"},
         BroadcastWord,
         Request("SetUnlockedInfo", Entries({{"ratingInfo", "3"}})),
         Reply({}),
         "result: true\n"},
        {{"GetRatingLockState"},
         BroadcastWord,
         Request("GetRatingLockState"),
         Reply({{"lockState", "0"}}),
         "result: true\nlocked: false\n"},
        {{"UnMuteByRatingPin"}, BroadcastWord, Request("UnMuteByRatingPin"), Reply({}), "result: true\n"},
        {{"SetUnlockedInfoWhenFactoryMode", "1"},
         BroadcastWord,
         Request("SetUnlockedInfoWhenFactoryMode", Entries({{"lockState", "1"}})),
         Reply({}),
         "result: true\n"},
        {{"FlagServiceLocked"},
         BroadcastWord,
         Request("FlagServiceLocked"),
         Reply({{"outServiceLocked", "1"}}),
         "result: true\nlocked: true\n"},
    };
}

using BroadcastCallTest = CallTest;

TEST_P(BroadcastCallTest, SendsTheRequestAndPrintsTheReply)
{
    Check();
}

INSTANTIATE_TEST_SUITE_P(Tracks, BroadcastCallTest, testing::ValuesIn(TrackCases()), NameOfCase);
INSTANTIATE_TEST_SUITE_P(TextsAndLocks, BroadcastCallTest, testing::ValuesIn(TextAndLockCases()), NameOfCase);

} // namespace
} // namespace zviptv::test
