// SPDX-License-Identifier: MIT
#include "FunctionRow.h"

using namespace zviptv;
using namespace zviptv::test;

namespace {

TEST_F(FunctionTest, SettersOfThePlayer)
{
    Check(Row(Request("SetCurrentAudioByIndex", {{"index", "-1"}}),
              [](auto& tv, auto... more) { return tv.Player().SetCurrentAudioByIndex(-1, more...); }));
    Check(Row(
        Request("SetAudioFormat", {{"encodeType", "3"}, {"isPreferred", "1"}}),
        [](auto& tv, auto... more) { return tv.Player().SetAudioFormat(AudioCoding::Eac3, true, more...); }));
    Check(Row(Request("SetDigitalDualSound", {{"mode", "2"}}), [](auto& tv, auto... more) {
        return tv.Player().SetDigitalDualSound(MultiSound::Sub, more...);
    }));
    Check(Row(Request("SetCurrentTTX", {{"index", "4294967295"}}),
              [](auto& tv, auto... more) { return tv.Player().SetCurrentTTX(4294967295U, more...); }));
    Check(Row(Request("SetCurrentHybridSBT", {{"index", "2147483648"}}),
              [](auto& tv, auto... more) { return tv.Player().SetCurrentHybridSBT(2147483648U, more...); }));
    Check(Row(Request("SetCurrentISDBText", {{"mode", "1"}, {"index", "-3"}}), [](auto& tv, auto... more) {
        return tv.Player().SetCurrentISDBText(IsdbTextKind::Superimpose, -3, more...);
    }));
    Check(Row(Request("SetCurrentISDBTextService", {{"mode", "0"}, {"compTag", "56"}}),
              [](auto& tv, auto... more) {
                  return tv.Player().SetCurrentISDBTextService(IsdbTextKind::Caption, 56, more...);
              }));
    Check(Row(Request("MuteAudio", {{"onoff", "1"}}),
              [](auto& tv, auto... more) { return tv.Player().MuteAudio(true, more...); }));
    Check(Row(Request("MuteVideo", {{"onoff", "0"}}),
              [](auto& tv, auto... more) { return tv.Player().MuteVideo(false, more...); }));
    Check(Row(Entries({{"functionname", "SetAppID"}, {"AppID", "org.example.app"}}),
              [](auto& tv, auto... more) { return tv.Player().SetAppID("org.example.app", more...); }));
}

TEST_F(FunctionTest, GettersOfThePlayer)
{
    Check(Row(Request("GetSTCCount"), Reply({{"stcCount", "8589934591"}}), std::uint64_t{8589934591},
              [](auto& tv, auto... more) { return tv.Player().GetSTCCount(more...); }));
    Check(Row(Request("GetCaptionDataMode"), Reply({{"mode", "2"}}), CaptionMode::Automatic,
              [](auto& tv, auto... more) { return tv.Player().GetCaptionDataMode(more...); }));
    Check(Row(Request("GetDefaultCaptionService"), Reply({{"service", "6"}}), CaptionService::Service6,
              [](auto& tv, auto... more) { return tv.Player().GetDefaultCaptionService(more...); }));
    Check(Row(Request("GetSourceState"), Reply({{"sourcestate", "17"}}), static_cast<SourceState>(17),
              [](auto& tv, auto... more) { return tv.Player().GetSourceState(more...); }));
    Check(Row(Request("GetFirstPTS"),
              Reply({{"firstPTS", "133200"},
                     {"timebaseden", "90000"},
                     {"timebasenum", "1"},
                     {"currenttime", "5000000000"}}),
              FirstPTSAnswer{133200, 90000, 1, std::chrono::milliseconds(5000000000)},
              [](auto& tv, auto... more) { return tv.Player().GetFirstPTS(more...); }));
}

TEST_F(FunctionTest, ResolutionOfThePlayer)
{
    std::string const bytes(
        "\x80\x07\0\0\x38\x04\0\0\x30\x75\0\0\xe9\x03\0\0\x10\0\x09\0\x01\0\0\0\0\0\0\0\0\0\0\0", 32);
    ResolutionAnswer expected;
    expected.resolutionClass = ResolutionClass::Fhd;
    expected.resolution = {1920, 1080, 30000, 1001, 16, 9, 1};
    Check(Row(Request("GetResolution"), Reply({{"resolution", "3"}, {"resolutioninfo", bytes}}), expected,
              [](auto& tv, auto... more) { return tv.Player().GetResolution(more...); }));
    EXPECT_EQ(ToString(expected.resolution),
              "width=1920 height=1080 frameRateNumerator=30000 frameRateDenominator=1001 aspectWidth=16 "
              "aspectHeight=9 interlaced=1");
}

} // namespace
