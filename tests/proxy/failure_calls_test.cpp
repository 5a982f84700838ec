// SPDX-License-Identifier: MIT
#include "FailureText.h"
#include "MethodTable.h"

using namespace zviptv::test;

namespace {

class CallFailure : public ServiceTest
{
protected:
    IPlayerControl& m_player = *CreatePlayer();
};

TEST_F(CallFailure, TimesOut)
{
    m_service.AnswerNothing("MuteAudio");
    EXPECT_FALSE(m_player.MuteAudio(true));
    EXPECT_EQ(LastFailure(),
              "timed out | MuteAudio |  |  | no answer to the request within 2000 ms; check that "
              "the service does not hang and is not overloaded");
}

TEST_F(CallFailure, IsDeniedByThePolicy)
{
    m_service.AnswerWith(
        "MuteAudio", WireAnswer::Error("org.freedesktop.DBus.Error.AccessDenied", "Rejected send message"));
    EXPECT_FALSE(m_player.MuteAudio(true));
    EXPECT_EQ(LastFailure(),
              "bus error | MuteAudio |  | org.freedesktop.DBus.Error.AccessDenied | Rejected send message");
}

/// The bus answers instead of the service.
TEST_F(CallFailure, PartnerDiesDuringTheCall)
{
    m_service.AnswerNothing("MuteAudio");
    auto call = std::async(std::launch::async, [this] {
        EXPECT_FALSE(m_player.MuteAudio(true));
        return LastFailure();
    });
    ASSERT_TRUE(m_service.WaitForRequest("MuteAudio"));
    m_service.Vanish();
    EXPECT_EQ(call.get(), "bus error | MuteAudio |  | org.freedesktop.DBus.Error.NoReply | Message recipient "
                          "disconnected from message bus without replying");
}

TEST_F(CallFailure, BusDiesDuringTheCall)
{
    m_service.AnswerNothing("MuteAudio");
    auto call = std::async(std::launch::async, [this] {
        EXPECT_FALSE(m_player.MuteAudio(true));
        return ZVGetLastFailure().kind;
    });
    ASSERT_TRUE(m_service.WaitForRequest("MuteAudio"));
    m_bus.Kill();
    EXPECT_EQ(call.get(), ZV_FAILURE_NO_BUS);
    EXPECT_FALSE(m_player.MuteAudio(true));
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_NO_BUS);
}

TEST_F(CallFailure, MessageIsTooLarge)
{
    std::string const name(std::size_t{32} * 1024 * 1024, 'x');
    EXPECT_FALSE(m_player.SetAppID(name.c_str()));
    EXPECT_EQ(LastFailure(),
              "too large | SetAppID |  |  | the request is larger than the bus carries (32 MiB); send less");
    EXPECT_TRUE(m_player.SetAppID("x"));
    EXPECT_EQ(LastFailure(), NoFailure("SetAppID"));
}

TEST_F(CallFailure, ReplyIsOfAnotherType)
{
    m_service.AnswerWith("MuteAudio", WireAnswer(WirePairs{{"result_internal", "1"}}));
    EXPECT_FALSE(m_player.MuteAudio(true));
    EXPECT_EQ(LastFailure(),
              "malformed reply | MuteAudio |  |  | The message has the type (a(ss)) instead of "
              "(a{sv})");
}

TEST_F(CallFailure, NamesTheMalformedKeyAndTheExpectedForm)
{
    unsigned long long clock = 0;
    m_service.Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "garbage"}});
    EXPECT_EQ(FailureOf([&] { m_player.GetSTCCount(clock); }), "invalid_argument: stoull");
    EXPECT_EQ(LastFailure(), MalformedFailure("GetSTCCount", "stcCount", "an unsigned 64-bit decimal number",
                                              "\"garbage\""));
    m_service.Answer("GetSTCCount", {{"stcCount", "1"}});
    EXPECT_EQ(FailureOf([&] { m_player.GetSTCCount(clock); }), "invalid_argument: stoi");
    EXPECT_EQ(LastFailure(), MalformedFailure("GetSTCCount", "result_internal",
                                              "a signed 32-bit decimal number", "nothing"));
}

TEST_F(CallFailure, MalformedReplyComesBeforeARefusal)
{
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    m_service.Answer("GetSourceState", {{"result_internal", "0"}});
    EXPECT_EQ(FailureOf([&] { m_player.GetSourceState(state); }), "invalid_argument: stoi");
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_MALFORMED_REPLY);
}

using BroadcastFailure = ServiceTest;

TEST_F(BroadcastFailure, NamesTheKeysOfRatingsAndCharacters)
{
    IBroadcastData& broadcast = *CreateBroadcast();
    std::vector<ZVRatingInfo> ratings;
    m_service.Answer("GetRatingInfo",
                     {{"result_internal", "1"}, {"ratingInfoSize", "349526"}, {"ratingInfo", ""}});
    EXPECT_EQ(FailureOf([&] { broadcast.GetRatingInfo(ratings); }),
              "length_error: vector::_M_default_append");
    EXPECT_EQ(LastFailure(),
              MalformedFailure("GetRatingInfo", "ratingInfoSize", "a number from 0 to 349525", "\"349526\""));
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    char code = 'x';
    m_service.Answer("GetCaptionLanguage", {{"result_internal", "1"}, {"landCode", "0"}, {"koreanCode", ""}});
    EXPECT_NE(FailureOf([&] { broadcast.GetCaptionLanguage(ZV_CAPTION_SERVICE_1, language, code); }), "none");
    EXPECT_EQ(LastFailure(), MalformedFailure("GetCaptionLanguage", "koreanCode", "a character", "nothing"));
}

TEST_F(CallFailure, EachThreadHasItsOwn)
{
    m_service.Answer("MuteVideo", {{"result_internal", "0"}});
    EXPECT_FALSE(m_player.MuteVideo(true));
    auto other = std::async(std::launch::async, [this] {
        std::string const before = LastFailure();
        EXPECT_TRUE(m_player.MuteAudio(true));
        return before + "; " + LastFailure();
    });
    EXPECT_EQ(other.get(), "none |  |  |  | ; " + NoFailure("MuteAudio"));
    EXPECT_EQ(LastFailure(),
              "refused | MuteVideo |  |  | the service refused: it answered with the result 0");
}

TEST_F(CallFailure, StaysWhenTheObjectDestroysItselfInTheMainLoop)
{
    m_service.Answer("MuteVideo", {{"result_internal", "0"}});
    EXPECT_FALSE(m_player.MuteVideo(true));
    m_service.Vanish();
    ASSERT_TRUE(RunUntil([&] { return m_log.Has(ZV_LOG_ERROR, "Destroy CPlayerControlProxy"); }));
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_REFUSED);
    EXPECT_FALSE(m_player.MuteVideo(true));
    EXPECT_EQ(LastFailure(), GoneFailure("MuteVideo"));
}

} // namespace
