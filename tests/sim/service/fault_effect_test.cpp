// SPDX-License-Identifier: MIT
#include "FaultTest.h"
#include "PushTest.h"

namespace zviptv::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

TEST_F(FaultyPushes, DoNotFollowAFailedRequestWithoutEffect)
{
    Begin({"requestPESCB=error,effect=no,application=" + m_application.Peer().Name()});
    Subscribe(m_application, false);
    EXPECT_EQ(Request(m_application, "requestPESCB").errorName, "org.corvel.zviptvapi.Error.Injected");
    PlayToTheEnd();
    EXPECT_THAT(Notifications("PESCB"), IsEmpty());
}

TEST_F(FaultyPushes, FollowAFailedRequestWithEffect)
{
    Begin({"requestPESCB=error"});
    Subscribe(m_application, false);
    EXPECT_EQ(Request(m_application, "requestPESCB").errorName, "org.corvel.zviptvapi.Error.Injected");
    PlayToTheEnd();
    EXPECT_THAT(Notifications("PESCB"), SizeIs(3 * Count));
}

/// The application gets an answer that reports success.
TEST_F(FaultyPushes, DoNotFollowASuccessWithoutEffect)
{
    Begin({"requestPESCB=result:1,effect=no"});
    Subscribe(m_application);
    PlayToTheEnd();
    EXPECT_THAT(Notifications("PESCB"), IsEmpty());
}

TEST_F(FaultInjection, WithoutEffectTheRequestIsNotCarriedOut)
{
    Begin({"SetCurrentAudioByIndex=error,effect=no", "SetCurrentTTX=drop,effect=no",
           "SetCurrentHybridSBT=delay:1,effect=no", "SetAppID=delay:2"});
    EXPECT_EQ(Ask("SetCurrentAudioByIndex").errorName, InjectedError);
    EXPECT_EQ(AskWithShortTimeout("SetCurrentTTX").errorName, NoReply);
    EXPECT_EQ(Number(Ask("SetCurrentHybridSBT"), "result_internal"), "0");
    EXPECT_EQ(Number(Ask("SetAppID"), "result_internal"), "1");
    m_application.Announce("BROADCASTDATA");
    for (char const* const function : {"GetCurrentAudioInfo", "GetCurrentTTX", "GetCurrentHybridSBT"}) {
        EXPECT_EQ(Number(Ask(function, "BROADCASTDATA"), "index"), "0") << function;
    }
    for (char const* const note : {"fault: error effect=no\n", "fault: drop effect=no\n",
                                   "fault: delay:1 effect=no\n", "fault: delay:2\n"}) {
        EXPECT_TRUE(m_simulator->WaitForErrors(note, Patience)) << note << m_simulator->Errors();
    }
}

/// A question is not answered then, but refused.
TEST_F(FaultInjection, WithoutEffectTheAnswerContainsOnlyTheResult)
{
    Begin({"GetSTCCount=result:1,effect=no", "CloneUSBToTV=garbage:data,effect=no"});
    WireMessage const clock = Ask("GetSTCCount");
    EXPECT_EQ(clock.entries, Entries({{"result_internal", "1"}}));
    m_application.Announce("IPGUTIL");
    EXPECT_EQ(Ask("CloneUSBToTV", "IPGUTIL").entries, Entries({{"result_internal", "0"}}));
}

TEST_F(FaultInjection, AreLimitedByCountTimeAndApplication)
{
    Application other;
    Begin({"MuteAudio=error,count=2", "MuteVideo=error,for=0.2", "GetSTCCount=error,from=600",
           "GetSourceState=error,application=" + other.Peer().Name(),
           "GetResolution=error,application=org.example.player"});
    EXPECT_EQ(Ask("MuteAudio").errorName, InjectedError);
    EXPECT_EQ(Ask("MuteAudio").errorName, InjectedError);
    EXPECT_EQ(Number(Ask("MuteAudio"), "result_internal"), "1");
    while (Ask("MuteVideo").kind == WireKind::Error) {
    }
    EXPECT_EQ(Number(Ask("MuteVideo"), "result_internal"), "1");
    EXPECT_EQ(Ask("GetSTCCount").kind, WireKind::Reply);
    EXPECT_EQ(Ask("GetSourceState").kind, WireKind::Reply);
    other.Announce(Type);
    EXPECT_EQ(other.Ask(Type, {{"functionname", "GetSourceState"}}).errorName, InjectedError);
    EXPECT_EQ(other.Ask(Type, {{"functionname", "GetResolution"}}).kind, WireKind::Reply);
    other.Ask(Type, {{"functionname", "SetAppID"}, {"AppID", "org.example.player"}});
    EXPECT_EQ(other.Ask(Type, {{"functionname", "GetResolution"}}).errorName, InjectedError);
    EXPECT_EQ(Ask("GetResolution").kind, WireKind::Reply);
}

} // namespace
} // namespace zviptv::test
