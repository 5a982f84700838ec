// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// The JSON object of a command that failed has nothing else.
void ExpectErrorAlone(std::string const& output, std::string const& start)
{
    Json::Value const json = ParseJson(output);
    EXPECT_FALSE(json["result"].asBool());
    EXPECT_THAT(json["error"].asString(), StartsWith(start));
    EXPECT_EQ(json.size(), 2U);
}

TEST_F(CtlTest, ARefusalEndsWithExitCode1)
{
    m_service.Answer("MuteAudio", {{"result_internal", "0"}});
    CtlResult const result = RunCtl({"call", "MuteAudio", "1"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.output, "result: false\n");
    EXPECT_EQ(result.errors, "");
}

TEST_F(CtlTest, AMissingBusEndsWithExitCode3)
{
    CtlResult const result =
        RunCtl({"call", "MuteAudio", "1"}, {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus"}});
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, StartsWith("zviptvctl: the system bus cannot be reached ("));
    EXPECT_THAT(result.errors, HasSubstr("set DBUS_SYSTEM_BUS_ADDRESS"));
}

TEST_F(CtlTest, AMissingServiceEndsWithExitCode3)
{
    m_service.Vanish();
    for (Words const& command : std::vector<Words>{{"call", "MuteAudio", "1"},
                                                   {"call", "GetRatingInfo"},
                                                   {"call", "GetGenre", "1"},
                                                   {"status"},
                                                   {"pes"},
                                                   {"caption"},
                                                   {"watch"}}) {
        CtlResult const result = RunCtl(command);
        EXPECT_EQ(result.code, 3) << command.front();
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(
            result.errors,
            "zviptvctl: no service on this bus: start zviptv-sim, or set DBUS_SYSTEM_BUS_ADDRESS to the bus "
            "that has it\n");
    }
    ExpectErrorAlone(RunCtl({"--json", "status"}).output, "no service on this bus");
}

TEST_F(CtlTest, ATimeoutEndsWithExitCode4)
{
    m_service.AnswerNothing("GetSTCCount");
    CtlResult const result = RunCtl({"--json", "call", "GetSTCCount"});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.errors,
              "zviptvctl: GetSTCCount: no answer to the request within 2000 ms; check that the "
              "service does not hang and is not overloaded\n");
    ExpectErrorAlone(result.output, "GetSTCCount: no answer");
}

TEST_F(CtlTest, AnErrorReplyEndsWithExitCode4)
{
    m_service.AnswerError("GetGenre");
    CtlResult const result = RunCtl({"call", "GetGenre", "1"});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(
        result.errors,
        "zviptvctl: GetGenre: the service answered with the error org.corvel.test.Failed: scripted error\n");
}

TEST_F(CtlTest, ErrorsOfTheServiceAreShownWithoutControlCharacters)
{
    m_service.AnswerWith("GetGenre", WireAnswer::Error("org.corvel.test.Failed", "a\x1b[2J\xc2\x9b\x7f"));
    CtlResult const result = RunCtl({"--json", "call", "GetGenre", "1"});
    EXPECT_EQ(result.code, 4);
    EXPECT_THAT(result.errors, testing::EndsWith("org.corvel.test.Failed: a\\x1b[2J\\xc2\\x9b\\x7f\n"));
    EXPECT_THAT(result.output, HasSubstr("org.corvel.test.Failed: a\\\\x1b[2J\\\\xc2\\\\x9b\\\\x7f\""));
}

TEST_F(CtlTest, AnErrorOfTheBusEndsWithExitCode4)
{
    m_service.AnswerError("GetGenre", "org.freedesktop.DBus.Error.LimitsExceeded");
    CtlResult const result = RunCtl({"call", "GetGenre", "1"});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.errors, "zviptvctl: GetGenre: the bus answered with the error "
                             "org.freedesktop.DBus.Error.LimitsExceeded: scripted error\n");
}

TEST_F(CtlTest, ADBusErrorThatServicesSendIsNotBlamedOnTheBus)
{
    m_service.AnswerError("GetGenre", "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(RunCtl({"call", "GetGenre", "1"}).errors,
              "zviptvctl: GetGenre: the service answered with the error "
              "org.freedesktop.DBus.Error.InvalidArgs: scripted error\n");
}

TEST_F(CtlTest, ReportsWhoMayCallAfterADenialOfTheBus)
{
    m_service.AnswerError("GetGenre", "org.freedesktop.DBus.Error.AccessDenied");
    CtlResult const result = RunCtl({"call", "GetGenre", "1"});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(
        result.errors,
        "zviptvctl: GetGenre: the bus's policy does not let this user call the service (AccessDenied): add "
        "the user to the group zviptv-apps, and log in again\n");
}

TEST_F(CtlTest, AServiceWithoutAnEndpointEndsWithExitCode4)
{
    m_service.SetPartnerName("");
    CtlResult const result = RunCtl({"call", "MuteAudio", "1"});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.errors,
              "zviptvctl: MuteAudio: this service has no player control endpoint (PLAYERCONTROL)\n");
    EXPECT_EQ(RunCtl({"guide", "genre", "1"}).errors,
              "zviptvctl: GetGenre: this service has no programme guide endpoint (IPGUTIL)\n");
}

TEST_F(CtlTest, AServiceThatHangsEndsWithExitCode4)
{
    m_service.AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    CtlResult const result = RunCtl({"call", "MuteAudio", "1"});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.errors,
              "zviptvctl: MuteAudio: no answer to the announcement within 2000 ms; check that the service "
              "does not hang and is not overloaded\n");
}

/// The service leaves during the request.
TEST_F(CtlTest, AServiceThatDiesDuringACallEndsWithExitCode3)
{
    m_service.AnswerNothing("MuteAudio");
    auto const child = StartCtl({"call", "MuteAudio", "1"});
    ASSERT_TRUE(m_service.WaitForRequest("MuteAudio"));
    m_service.Vanish();
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.errors, "zviptvctl: MuteAudio: the service left the bus; start it again\n");
}

TEST_F(CtlTest, ABusThatDiesDuringACallEndsWithExitCode4)
{
    m_service.AnswerNothing("MuteAudio");
    auto const child = StartCtl({"call", "MuteAudio", "1"});
    ASSERT_TRUE(m_service.WaitForRequest("MuteAudio"));
    m_bus.Kill();
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(result.errors,
              "zviptvctl: MuteAudio: the bus closed the connection; check that it still runs\n");
}

/// Neither a first connection nor the next question finds a free descriptor.
TEST_F(CtlTest, ReportsThatNoDescriptorIsFree)
{
    for (char const* const command : {"status", "pes", "watch"}) {
        ChildProcess child({"sh", "-c", "ulimit -n 8; exec \"$0\" \"$1\"", ZVIPTVCTL_PATH, command});
        CtlResult const result = Finish(child);
        EXPECT_EQ(result.code, 3) << command;
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors,
                  "zviptvctl: the system bus cannot be reached (too many open files; close some, "
                  "or raise the limit (ulimit -n))\n");
    }
}

struct BadReply
{
    Words arguments;
    WireEntries reply;
    std::string fault;
};

TEST_F(CtlTest, AMalformedReplyEndsWithExitCode5)
{
    std::vector<BadReply> const replies = {
        {{"MuteAudio", "1"},
         Entries({}),
         "result_internal is malformed: expected a signed 32-bit decimal number, got nothing\n"},
        {{"GetSTCCount"},
         Entries({{"result_internal", "1"}, {"stcCount", "soon"}}),
         "stcCount is malformed: expected an unsigned 64-bit decimal number, got \"soon\"\n"},
        {{"GetSourceState"},
         Entries({{"result_internal", "1"}, {"sourcestate", "4294967296"}}),
         "sourcestate is malformed: expected a signed 32-bit decimal number, got \"4294967296\"\n"},
        {{"GetCaptionLanguage", "1"},
         Entries({{"result_internal", "1"}, {"landCode", "0"}, {"koreanCode", ""}}),
         "koreanCode is malformed: expected a character, got nothing\n"},
        {{"GetRatingInfo"},
         Entries({{"result_internal", "1"}, {"ratingInfoSize", "-1"}, {"ratingInfo", ""}}),
         "ratingInfoSize is malformed: expected a number from 0 to 349525, got \"-1\"\n"},
        {{"ExistXmlForIPG"},
         Entries({}),
         "data is malformed: expected a signed 32-bit decimal number, got nothing\n"},
    };
    for (BadReply const& bad : replies) {
        m_service.AnswerWith(bad.arguments.front(), bad.reply);
        Words words = {"call"};
        words.insert(words.end(), bad.arguments.begin(), bad.arguments.end());
        CtlResult const result = RunCtl(words);
        EXPECT_EQ(result.code, 5) << bad.arguments.front();
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "zviptvctl: the service's answer to " + bad.arguments.front() +
                                     " cannot be read: " + bad.fault);
    }
}

/// Its number must not be given to a connection, which would get the output then.
TEST_F(CtlTest, AClosedOutputEndsWithExitCode6)
{
    for (char const* const command : {"status", "pes", "watch", "methods"}) {
        ChildProcess child({"sh", "-c", "exec \"$0\" \"$1\" >&-", ZVIPTVCTL_PATH, command});
        CtlResult const result = Finish(child);
        EXPECT_EQ(result.code, 6) << command;
        EXPECT_EQ(result.errors, "zviptvctl: cannot write standard output: it is closed\n");
    }
    EXPECT_TRUE(m_service.Requests().empty());
}

/// Messages for the user must not get into the connection either.
TEST_F(CtlTest, ClosedInputAndErrorsChangeNothing)
{
    m_service.Answer("MuteAudio", {{"result_internal", "1"}});
    for (std::string const closed : {"2>&-", "<&-", "<&- 2>&-"}) {
        ChildProcess child({"sh", "-c", "exec \"$0\" --log call MuteAudio 1 " + closed, ZVIPTVCTL_PATH});
        CtlResult const result = Finish(child);
        EXPECT_EQ(result.code, 0) << closed;
        EXPECT_EQ(result.output, "result: true\n") << closed;
    }
    EXPECT_EQ(m_service.Requests().size(), 3U);
}

TEST_F(CtlTest, AFullOutputEndsWithExitCode6)
{
    ChildProcess child({"sh", "-c", "exec \"$0\" call MuteAudio 1 > /dev/full", ZVIPTVCTL_PATH});
    CtlResult const result = Finish(child);
    EXPECT_EQ(result.code, 6);
    EXPECT_EQ(result.errors, "zviptvctl: cannot write standard output: No space left on device\n");
}

} // namespace
} // namespace zviptv::test
