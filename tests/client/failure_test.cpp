// SPDX-License-Identifier: MIT
#include "ClientTest.h"

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

/// Both forms of a call that reads a number of each size.
class FailureTest : public TelevisionTest
{
protected:
    Failure Blocking()
    {
        Result<FirstPTSAnswer> const result = player().GetFirstPTS();
        return result ? Failure{} : result.GetFailure();
    }
    Failure Async()
    {
        Outcome<FirstPTSAnswer> outcome;
        player().GetFirstPTS(outcome.Take());
        EXPECT_TRUE(outcome.Await());
        return *outcome ? Failure{} : outcome->GetFailure();
    }

    /// Both forms fail in the same way.
    void Check(FailureKind kind, std::string const& key, std::string const& message)
    {
        for (Failure const& failure : {Blocking(), Async()}) {
            EXPECT_EQ(ToString(failure.kind), std::string(ToString(kind)));
            EXPECT_EQ(failure.function, "GetFirstPTS");
            EXPECT_EQ(failure.key, key);
            EXPECT_THAT(failure.message, HasSubstr(message));
        }
    }
    void Answer(std::string const& result, std::string const& pts, std::string const& den = "1",
                std::string const& now = "1")
    {
        m_service->Answer("GetFirstPTS", {{"result_internal", result},
                                          {"firstPTS", pts},
                                          {"timebaseden", den},
                                          {"timebasenum", "1"},
                                          {"currenttime", now}});
    }
};

TEST_F(FailureTest, ARefusalMayOmitTheValues)
{
    m_service->Answer("GetFirstPTS", {{"result_internal", "0"}});
    Check(FailureKind::Refused, "", "it answered with the result 0");
}

TEST_F(FailureTest, NamesAMalformedValue)
{
    Answer("1", "two");
    Check(FailureKind::MalformedReply, "firstPTS", "expected an unsigned 64-bit decimal number, got \"two\"");
    Answer("1", "1", "2147483648");
    Check(FailureKind::MalformedReply, "timebaseden",
          "expected a signed 32-bit decimal number, got \"2147483648\"");
    Answer("1", "1", "1", "18446744073709551615");
    Check(FailureKind::MalformedReply, "currenttime", "expected a number of milliseconds below 2^63");
    Answer("x", "1");
    Check(FailureKind::MalformedReply, "result_internal", "got \"x\"");
    m_service->Answer("GetFirstPTS", {{"result_internal", "1"}});
    Check(FailureKind::MalformedReply, "firstPTS", "got nothing");
    Answer("1", std::string(100, '\x01'));
    Check(FailureKind::MalformedReply, "firstPTS", "got \"" + std::string(40, '?') + "\"...");
}

TEST_F(FailureTest, AReplyOfAnotherTypeIsMalformed)
{
    m_service->AnswerWith("GetFirstPTS", WireBody::Strings({"a"}));
    Check(FailureKind::MalformedReply, "", "instead of (a{sv})");
}

TEST_F(FailureTest, ADBusErrorHasItsName)
{
    m_service->AnswerError("GetFirstPTS", "org.corvel.test.Failed");
    Check(FailureKind::BusError, "", "scripted error");
    EXPECT_EQ(Blocking().errorName, "org.corvel.test.Failed");
    EXPECT_EQ(Async().errorName, "org.corvel.test.Failed");
    EXPECT_EQ(ToString(Blocking()), "GetFirstPTS: bus error (org.corvel.test.Failed): scripted error");
}

TEST_F(FailureTest, AServiceThatHangsTimesOutAfterTwoSeconds)
{
    m_service->AnswerNothing("GetFirstPTS");
    auto const start = std::chrono::steady_clock::now();
    Check(FailureKind::TimedOut, "", "within 2000 ms");
    EXPECT_GE(std::chrono::steady_clock::now() - start, 4000ms);
}

TEST_F(FailureTest, AMessageThatIsTooLargeIsNotSent)
{
    std::string const large(33 * 1024 * 1024, 'x');
    EXPECT_EQ(KindOf(m_television->Guide().CloneUSBToTV(large)), "too large");
    Outcome<bool> outcome;
    m_television->Guide().CloneUSBToTV(large, outcome.Take());
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "too large");
    EXPECT_TRUE(m_service->Requests().empty());
    EXPECT_EQ(KindOf(m_television->Guide().CloneUSBToTV("small")), "malformed reply") << "connected still";
}

TEST_F(FailureTest, ReportsAServiceWithoutTheEndpoint)
{
    m_service->SetPartnerName("");
    Check(FailureKind::NoService, "dbusname", "the service has no endpoint for PLAYERCONTROL");
}

TEST_F(FailureTest, AnEndpointWithoutAUniqueNameIsMalformed)
{
    for (char const* wrong : {"no name", "org.corvel.zviptvapi.dbushelper"}) {
        m_service->SetPartnerName(wrong);
        Check(FailureKind::MalformedReply, "dbusname", "expected a unique bus name");
    }
}

TEST_F(FailureTest, AnEndpointThatIsNotOnTheBusIsNoService)
{
    m_service->SetPartnerName(":1.99999");
    Check(FailureKind::NoService, "", "start the service");
}

TEST_F(FailureTest, AnAnnouncementThatIsNotAnsweredTimesOut)
{
    m_service->AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    Check(FailureKind::TimedOut, "", "within 2000 ms");
}

TEST_F(FailureTest, AnAnnouncementMayFail)
{
    m_service->AnswerAnnouncements(
        [](Announcement const&) { return WireAnswer::Error("org.corvel.test.Failed", "not now"); });
    Check(FailureKind::BusError, "", "not now");
    m_service->AnswerAnnouncements([](Announcement const&) { return WireBody::Strings({"a"}); });
    Check(FailureKind::MalformedReply, "", "expected the type (a(ss))");
}

TEST_F(FailureTest, WithoutAServiceCallsFailAtOnce)
{
    KillService();
    auto const start = std::chrono::steady_clock::now();
    Check(FailureKind::NoService, "", "start the service");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
}

TEST_F(FailureTest, WithoutABusCallsFailAtOnce)
{
    m_bus.Kill();
    auto const start = std::chrono::steady_clock::now();
    Check(FailureKind::NoBus, "", "start the bus");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
}

TEST(NoBus, ATelevisionIsCreatedNevertheless)
{
    Television::Options options;
    options.busAddress = "unix:path=/nonexistent/bus";
    Television television(options);
    EXPECT_EQ(KindOf(television.Player().MuteAudio(true)), "no bus");
    Outcome<void> outcome;
    television.Player().MuteAudio(true, outcome.Take());
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "no bus");
    EXPECT_THAT(outcome->GetFailure().message, HasSubstr("cannot connect to the bus"));
    options.busAddress = "nonsense";
    Television nonsense(options);
    EXPECT_EQ(KindOf(nonsense.Player().MuteAudio(true)), "no bus");
    EXPECT_FALSE(nonsense.IsAvailable());
}

} // namespace
