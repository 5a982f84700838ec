// SPDX-License-Identifier: MIT
#include "MethodTable.h"

using namespace zviptv::test;

namespace {

using PlayerControl = ServiceTest;

TEST_F(PlayerControl, FirstPTSGivesDenominatorBeforeNumerator)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.Answer("GetFirstPTS", {{"result_internal", "1"},
                                     {"firstPTS", "90000"},
                                     {"timebaseden", "90000"},
                                     {"timebasenum", "1"},
                                     {"currenttime", "12"}});
    unsigned long long pts = 0;
    int denominator = 0;
    int numerator = 0;
    unsigned long now = 0;
    EXPECT_TRUE(player.GetFirstPTS(pts, denominator, numerator, now));
    EXPECT_EQ(pts, 90000U);
    EXPECT_EQ(denominator, 90000);
    EXPECT_EQ(numerator, 1);
    EXPECT_EQ(now, 12U);
}

TEST_F(PlayerControl, AcceptsAnswersInAnyOrder)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.Answer("GetFirstPTS", {{"currenttime", "4"},
                                     {"timebasenum", "3"},
                                     {"timebaseden", "2"},
                                     {"firstPTS", "1"},
                                     {"result_internal", "1"}});
    EXPECT_EQ(Getter(&IPlayerControl::GetFirstPTS, 0ULL, 0, 0, 0UL)(player).outputs, "1, 2, 3, 4");
}

/// Values before the malformed one are decoded. Later ones keep their start values.
TEST_F(PlayerControl, DecodesInOrderUpToTheMalformedValue)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.Answer("GetFirstPTS", {{"result_internal", "1"},
                                     {"firstPTS", "1"},
                                     {"timebaseden", "2"},
                                     {"timebasenum", "bad"},
                                     {"currenttime", "4"}});
    unsigned long long pts = 77;
    int denominator = 77;
    int numerator = 77;
    unsigned long now = 77;
    EXPECT_EQ(FailureOf([&] { player.GetFirstPTS(pts, denominator, numerator, now); }),
              "invalid_argument: stoi");
    EXPECT_EQ(ShowAll(pts, denominator, numerator, now), "1, 2, 0, 0");
}

TEST_F(PlayerControl, ResolutionIsDecodedBeforeItsRecord)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.Answer("GetResolution", {{"result_internal", "1"}, {"resolutioninfo", PatternBytes(32)}});
    cvtv_resolution_e resolution = CVTV_RESOLUTION_HD;
    auto info = Untouched<ZVResolution>();
    EXPECT_EQ(FailureOf([&] { player.GetResolution(resolution, info); }), "invalid_argument: stoi");
    EXPECT_EQ(resolution, CVTV_RESOLUTION_UNKNOWN);
    EXPECT_EQ(HexOf(BytesOf(info)), HexOf(std::string(32, '\xee')));
}

TEST_F(PlayerControl, ResultIsReadBeforeTheValues)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.Answer("GetSourceState", {{"sourcestate", "2"}});
    EZVSourceState state = ZV_SOURCE_STATE_PLAYING;
    EXPECT_EQ(FailureOf([&] { player.GetSourceState(state); }), "invalid_argument: stoi");
    EXPECT_EQ(state, ZV_SOURCE_STATE_UNKNOWN);
}

TEST_F(PlayerControl, LogsNoResultIfNothingWasDecoded)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.Answer("GetCaptionDataMode", {{"result_internal", "1"}});
    m_service.AnswerError("GetDefaultCaptionService");
    EZVCaptionDataMode mode = ZV_CAPTION_DATA_MODE_NONE;
    EZVCaptionService service = ZV_CAPTION_SERVICE_1;
    m_log.Clear();
    EXPECT_EQ(FailureOf([&] { player.GetCaptionDataMode(mode); }), "invalid_argument: stoi");
    EXPECT_FALSE(player.GetDefaultCaptionService(service));
    EXPECT_EQ(LinesOf(m_log, "PlayerControlProxy.cpp: GetCaptionDataMode"), (Lines{{ZV_LOG_INFO, ""}}));
    EXPECT_EQ(LinesOf(m_log, "PlayerControlProxy.cpp: GetDefaultCaptionService"),
              (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_ERROR, "SendMessage failed."}}));
}

TEST_F(PlayerControl, TheFirstOfTwoResultsIsUsed)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.Answer("MuteAudio", {{"result_internal", "0"}, {"result_internal", "1"}});
    EXPECT_FALSE(player.MuteAudio(true));
}

TEST_F(PlayerControl, TimesOutAfterTwoSeconds)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.AnswerNothing("MuteAudio");
    auto const start = std::chrono::steady_clock::now();
    EXPECT_FALSE(player.MuteAudio(true));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1990));
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "SendMessage failed."));
}

TEST_F(PlayerControl, GettersKeepTheirStartValuesWithoutAService)
{
    IPlayerControl& player = *CreatePlayer();
    m_service.Vanish();
    ASSERT_TRUE(WirePeer().WaitForOwner(m_service.Name(), false));
    auto state = static_cast<EZVSourceState>(77);
    auto mode = static_cast<EZVCaptionDataMode>(77);
    auto service = static_cast<EZVCaptionService>(77);
    unsigned long long stc = 77;
    EXPECT_FALSE(player.GetSourceState(state));
    EXPECT_FALSE(player.GetCaptionDataMode(mode));
    EXPECT_FALSE(player.GetDefaultCaptionService(service));
    EXPECT_FALSE(player.GetSTCCount(stc));
    EXPECT_EQ(ShowAll(state, mode, service, stc), "-1, -1, 0, 77");
    EXPECT_EQ(m_log.Count("SendMessage failed."), 4U);
}

TEST_F(PlayerControl, NeedsNoLoopForCalls)
{
    IPlayerControl& player = *CreatePlayer();
    auto const call = [&player] { return player.MuteAudio(true); };
    EXPECT_TRUE(std::async(std::launch::async, call).get());
    EXPECT_TRUE(call());
}

} // namespace
