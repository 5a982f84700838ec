// SPDX-License-Identifier: MIT
#include "DoctorFixture.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

constexpr char AllTypes[] = "PLAYERCONTROL, BROADCASTDATA, IPTVDATASUBSCRIBER, IPGUTIL";
constexpr char AllFunctions[] = "GetSourceState, SizeOfAudio, requestPESCB, ExistXmlForIPG";

/// An answer of the service, and how the doctor reports it.
struct AnswerCase
{
    char const* name;
    WireAnswer answer;
    int code;
    std::string text;
};

void PrintTo(AnswerCase const& given, std::ostream* out)
{
    *out << given.name;
}

/// The answer is the helper's to "y"; the doctor reports it for all endpoints.
class DoctorOfAHelper : public DoctorOfAService, public testing::WithParamInterface<AnswerCase>
{
};

TEST_P(DoctorOfAHelper, ReportsTheKey)
{
    AnswerCase const& naming = GetParam();
    m_service.AnswerAnnouncements([&](Announcement const& announcement) {
        return announcement.add == "y" ? naming.answer : WireAnswer(WirePairs{});
    });
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, naming.code);
    EXPECT_EQ(diagnosis.Wrong(), "endpoints");
    EXPECT_EQ(diagnosis.Text("endpoints"), naming.text + ": " + AllTypes);
    EXPECT_EQ(diagnosis.Text("requests"), "not checked: no endpoint is known");
    EXPECT_EQ(diagnosis.Command("endpoints"), "") << "no command corrects a service";
    EXPECT_THAT(diagnosis.checks.at("endpoints")["note"].asString(),
                HasSubstr("answer each announcement with one pair, \"dbusname\" and the unique name"));
}

INSTANTIATE_TEST_SUITE_P(
    Answers, DoctorOfAHelper,
    testing::Values(
        AnswerCase{"EmptyList", WirePairs{}, 5,
                   "\"dbusname\" is missing in the answer to announcements, which is empty"},
        AnswerCase{"WrongKey", WirePairs{{"busname", ":1.1"}}, 5,
                   "\"dbusname\" is missing in the answer to announcements, which has \"busname\""},
        AnswerCase{"EmptyName", WirePairs{{"dbusname", ""}}, 4,
                   "\"dbusname\" is empty in the answer to announcements"},
        AnswerCase{"JunkName", WirePairs{{"dbusname", "not a name"}}, 5,
                   "\"dbusname\" is \"not a name\", which is not a bus name, in the answer to announcements"},
        AnswerCase{"DeadName", WirePairs{{"dbusname", ":1.4711"}}, 4,
                   "\"dbusname\" is :1.4711, which nobody owns, in the answer to announcements"}),
    [](auto const& given) { return std::string(given.param.name); });

TEST_F(DoctorOfAService, ReportsTheMissingEndpoint)
{
    m_service.AnswerAnnouncements([&](Announcement const& announcement) {
        return WirePairs{{"dbusname", announcement.type == "IPGUTIL" ? "" : m_service.Name()}};
    });
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.Wrong(), "endpoints");
    EXPECT_EQ(diagnosis.Text("endpoints"), "\"dbusname\" is empty in the answer to announcements: IPGUTIL");
    EXPECT_THAT(diagnosis.checks.at("endpoints")["note"].asString(),
                HasSubstr("empty for an interface that the service leaves out on purpose"));
    EXPECT_EQ(diagnosis.State("requests"), "ok");
}

/// The service has answered the announcement of a channel's end.
TEST_F(DoctorOfAService, ReportsThatAnnouncementsFail)
{
    m_service.AnswerAnnouncements([](Announcement const& announcement) {
        return announcement.add == "n" ? WireAnswer(WirePairs{})
                                       : WireAnswer::Error("org.corvel.test.Failed", "no channel");
    });
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, 4);
    EXPECT_EQ(diagnosis.Text("endpoints"),
              "announcements get the error org.corvel.test.Failed: no channel: PLAYERCONTROL");
}

/// The answer is that to every request.
class DoctorOfReplies : public CtlTest, public testing::WithParamInterface<AnswerCase>
{
};

TEST_P(DoctorOfReplies, ReportsTheKey)
{
    AnswerCase const& reply = GetParam();
    m_service.AnswerByDefault(reply.answer);
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, reply.code);
    EXPECT_EQ(diagnosis.Wrong(), "requests");
    EXPECT_EQ(diagnosis.State("endpoints"), "ok");
    EXPECT_EQ(diagnosis.Text("requests"), reply.text);
    EXPECT_EQ(diagnosis.Command("requests"), "") << "no command corrects a service";
    EXPECT_THAT(diagnosis.checks.at("requests")["note"].asString(),
                HasSubstr("each value as a variant of ay, with \"result_internal\""));
}

INSTANTIATE_TEST_SUITE_P(
    Answers, DoctorOfReplies,
    testing::Values(
        AnswerCase{"Error", WireAnswer::Error("org.corvel.test.Failed", "not today"), 4,
                   std::string("requests get the error org.corvel.test.Failed: not today: ") + AllFunctions},
        AnswerCase{"Silence", WireAnswer::Nothing(), 4,
                   "requests get no answer within 2 seconds: GetSourceState"},
        AnswerCase{"Texts",
                   WireAnswer(WireBody::Variants({TextVariant("result_internal", "1"),
                                                  TextVariant("sourcestate", "2")})),
                   5, std::string("\"result_internal\" has the type s instead of ay: ") + AllFunctions},
        AnswerCase{"AnotherType", WireAnswer(WireBody::Strings({"1"})), 5,
                   std::string("replies have the type (s) instead of (a{sv}): ") + AllFunctions},
        AnswerCase{
            "NoValues", WireAnswer(Entries({{"result_internal", "1"}})), 5,
            "\"sourcestate\" is missing: GetSourceState; \"size\" is missing: SizeOfAudio; \"data\" is "
            "missing: ExistXmlForIPG"},
        AnswerCase{"NoNumber", WireAnswer(Entries({{"result_internal", "yes"}, {"data", "0"}})), 5,
                   "\"result_internal\" is \"yes\" instead of a number: GetSourceState, SizeOfAudio"}),
    [](auto const& given) { return std::string(given.param.name); });

/// The connection that is named has no such object.
TEST_F(DoctorOfAService, ReportsAnotherConnection)
{
    m_service.SetPartnerName("org.freedesktop.DBus");
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.Wrong(), "requests");
    EXPECT_THAT(diagnosis.Text("requests"),
                testing::StartsWith("requests get the error org.freedesktop.DBus.Error.Unknown"));
}

} // namespace
} // namespace zviptv::test
