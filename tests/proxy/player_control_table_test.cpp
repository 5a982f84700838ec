// SPDX-License-Identifier: MIT
#include "MethodTest.h"

using namespace zviptv::test;

namespace {

/// A number that needs every bit of an unsigned long, where that has 32, and more than 32 elsewhere.
constexpr char const* LargeTime = sizeof(unsigned long) == 8 ? "4294967297" : "4294967295";

using Row = Method<IPlayerControl>;

/// A call without out-parameters.
template <typename Call>
std::function<Outcome(IPlayerControl&)> Setter(Call call)
{
    return [call](IPlayerControl& player) { return Outcome{call(player), ""}; };
}

Row SetterRow(std::string name, std::function<Outcome(IPlayerControl&)> call, WireEntries request)
{
    std::string function = request.front().bytes;
    return {std::move(name), std::move(function), std::move(call), std::move(request), {}, "", ""};
}

std::vector<Row> Setters()
{
    return {
        SetterRow(
            "SetCurrentAudioByIndex", Setter([](auto& player) { return player.SetCurrentAudioByIndex(-1); }),
            Entries({{"functionname", "SetCurrentAudioByIndex"}, {"handleID", "256"}, {"index", "-1"}})),
        SetterRow("SetAudioFormat",
                  Setter([](auto& player) { return player.SetAudioFormat(ZV_AUDIO_ENCODE_EAC3, true); }),
                  Entries({{"functionname", "SetAudioFormat"},
                           {"handleID", "256"},
                           {"encodeType", "3"},
                           {"isPreferred", "1"}})),
        SetterRow("SetAudioFormatNotPreferred", Setter([](auto& player) {
                      return player.SetAudioFormat(static_cast<EZVAudioEncodeType>(-2147483647 - 1), false);
                  }),
                  Entries({{"functionname", "SetAudioFormat"},
                           {"handleID", "256"},
                           {"encodeType", "-2147483648"},
                           {"isPreferred", "0"}})),
        SetterRow("SetDigitalDualSound",
                  Setter([](auto& player) { return player.SetDigitalDualSound(ZV_MULTI_SOUND_SUB); }),
                  Entries({{"functionname", "SetDigitalDualSound"}, {"handleID", "256"}, {"mode", "2"}})),
        SetterRow("SetCurrentTTX", Setter([](auto& player) { return player.SetCurrentTTX(4294967295U); }),
                  Entries({{"functionname", "SetCurrentTTX"}, {"handleID", "256"}, {"index", "4294967295"}})),
        SetterRow(
            "SetCurrentHybridSBT",
            Setter([](auto& player) { return player.SetCurrentHybridSBT(2147483648U); }),
            Entries({{"functionname", "SetCurrentHybridSBT"}, {"handleID", "256"}, {"index", "2147483648"}})),
        SetterRow("SetCurrentISDBText", Setter([](auto& player) {
                      return player.SetCurrentISDBText(ZV_ISDB_TEXT_SUPERIMPOSE, -3);
                  }),
                  Entries({{"functionname", "SetCurrentISDBText"},
                           {"handleID", "256"},
                           {"mode", "1"},
                           {"index", "-3"}})),
        SetterRow("SetCurrentISDBTextService", Setter([](auto& player) {
                      return player.SetCurrentISDBTextService(ZV_ISDB_TEXT_SUPERIMPOSE, 56);
                  }),
                  Entries({{"functionname", "SetCurrentISDBTextService"},
                           {"handleID", "256"},
                           {"mode", "1"},
                           {"compTag", "56"}})),
        SetterRow("MuteAudio", Setter([](auto& player) { return player.MuteAudio(true); }),
                  Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}})),
        SetterRow("UnmuteAudio", Setter([](auto& player) { return player.MuteAudio(false); }),
                  Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "0"}})),
        SetterRow("MuteVideo", Setter([](auto& player) { return player.MuteVideo(true); }),
                  Entries({{"functionname", "MuteVideo"}, {"handleID", "256"}, {"onoff", "1"}})),
        SetterRow("UnmuteVideo", Setter([](auto& player) { return player.MuteVideo(false); }),
                  Entries({{"functionname", "MuteVideo"}, {"handleID", "256"}, {"onoff", "0"}})),
        SetterRow("SetAppID", Setter([](auto& player) { return player.SetAppID("org.example.app"); }),
                  Entries({{"functionname", "SetAppID"}, {"AppID", "org.example.app"}})),
        SetterRow("SetAppIDEmpty", Setter([](auto& player) { return player.SetAppID(""); }),
                  Entries({{"functionname", "SetAppID"}, {"AppID", ""}})),
        SetterRow("SetAppIDNull", Setter([](auto& player) { return player.SetAppID(nullptr); }),
                  Entries({{"functionname", "SetAppID"}})),
    };
}

std::vector<Row> Getters()
{
    return {
        {"GetSTCCount",
         "GetSTCCount",
         Getter(&IPlayerControl::GetSTCCount, 77ULL),
         Entries({{"functionname", "GetSTCCount"}, {"handleID", "256"}}),
         {{"stcCount", "18446744073709551615", Decoding::Stoull}},
         "18446744073709551615",
         "77"},
        {"GetCaptionDataMode",
         "GetCaptionDataMode",
         Getter(&IPlayerControl::GetCaptionDataMode, static_cast<EZVCaptionDataMode>(77)),
         Entries({{"functionname", "GetCaptionDataMode"}, {"handleID", "256"}}),
         {{"mode", "2", Decoding::Stoi}},
         "2",
         "-1",
         true},
        {"GetDefaultCaptionService",
         "GetDefaultCaptionService",
         Getter(&IPlayerControl::GetDefaultCaptionService, static_cast<EZVCaptionService>(77)),
         Entries({{"functionname", "GetDefaultCaptionService"}, {"handleID", "256"}}),
         {{"service", "6", Decoding::Stoi}},
         "6",
         "0",
         true},
        {"GetResolution",
         "GetResolution",
         Getter(&IPlayerControl::GetResolution, static_cast<cvtv_resolution_e>(77),
                Untouched<ZVResolution>()),
         Entries({{"functionname", "GetResolution"}, {"handleID", "256"}}),
         {{"resolution", "4", Decoding::Stoi}, {"resolutioninfo", PatternBytes(32), Decoding::Record}},
         "4, " + HexOf(PatternBytes(32)),
         "0, " + HexOf(std::string(32, '\xee'))},
        {"GetSourceState",
         "GetSourceState",
         Getter(&IPlayerControl::GetSourceState, static_cast<EZVSourceState>(77)),
         Entries({{"functionname", "GetSourceState"}, {"handleID", "256"}}),
         {{"sourcestate", "12345", Decoding::Stoi}},
         "12345",
         "-1"},
        {"GetFirstPTS",
         "GetFirstPTS",
         Getter(&IPlayerControl::GetFirstPTS, 77ULL, 77, 77, 77UL),
         Entries({{"functionname", "GetFirstPTS"}, {"handleID", "256"}}),
         {{"firstPTS", "8589934591", Decoding::Stoull},
          {"timebaseden", "90000", Decoding::Stoi},
          {"timebasenum", "1", Decoding::Stoi},
          {"currenttime", LargeTime, Decoding::Stoul}},
         std::string("8589934591, 90000, 1, ") + LargeTime,
         "0, 0, 0, 0"},
    };
}

std::vector<Row> All()
{
    std::vector<Row> rows = Setters();
    for (Row& row : Getters()) {
        rows.push_back(std::move(row));
    }
    return rows;
}

class PlayerControlTable : public MethodTest<IPlayerControl>
{
protected:
    PlayerControlTable() : MethodTest("PLAYERCONTROL", "PlayerControlProxy.cpp") {}
    IPlayerControl& Object() override { return *CreatePlayer(); }
};

TEST_P(PlayerControlTable, SendsAndDecodes)
{
    ExpectAccepted();
}

TEST_P(PlayerControlTable, DecodesForEveryResult)
{
    ExpectResultsAndDecoding();
}

TEST_P(PlayerControlTable, FailedExchangeLeavesStartValues)
{
    ExpectStartValuesAfterFailedExchange();
}

TEST_P(PlayerControlTable, IsRefusedAfterDestroy)
{
    ExpectRefusalAfterDestroy(CIPTVServiceAPI::DestroyPlayerControl);
}

TEST_P(PlayerControlTable, ThrowsWithoutAResult)
{
    ExpectFailureWithoutAResult();
}

INSTANTIATE_TEST_SUITE_P(PlayerControl, PlayerControlTable, testing::ValuesIn(All()),
                         RowName<IPlayerControl>);

class PlayerControlDecoding : public PlayerControlTable
{
};

TEST_P(PlayerControlDecoding, ThrowsOnMalformedNumbers)
{
    ExpectFailureOnMalformedNumbers();
}

INSTANTIATE_TEST_SUITE_P(PlayerControl, PlayerControlDecoding,
                         testing::ValuesIn(Select<IPlayerControl>(All(), HasNumbers)),
                         RowName<IPlayerControl>);

class PlayerControlRecord : public PlayerControlTable
{
};

TEST_P(PlayerControlRecord, CopiesItsSizeForDataOfAnySize)
{
    ExpectRecordsOfAnySize();
}

INSTANTIATE_TEST_SUITE_P(PlayerControl, PlayerControlRecord,
                         testing::ValuesIn(Select<IPlayerControl>(All(), HasRecords)),
                         RowName<IPlayerControl>);

} // namespace
