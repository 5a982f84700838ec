// SPDX-License-Identifier: MIT
#include "CtlFixture.h"
#include "DoctorFacts.h"
#include "Files.h"
#include "doctor/Report.h"

namespace zviptv::test {
namespace {

using namespace ctl::doctor;
using testing::EndsWith;
using testing::HasSubstr;

/// The example of the page on packages: a user who is not in the group, on a machine without a service.
Facts PackagingExample()
{
    Facts facts = MachineWithoutService();
    facts.caller.isListed = facts.caller.isMember = false;
    facts.versions.tool = facts.versions.loaded = "1.1.0";
    facts.versions.loadedFile = "/usr/lib/x86_64-linux-gnu/libzv-iptv-service-api.so.1.1.0";
    return facts;
}

TEST(DoctorReport, MatchesTheExampleInTheDocumentation)
{
    std::string const text = zviptv::test::ReadFile(PACKAGING_PAGE);
    EXPECT_THAT(text, HasSubstr("\n$ zviptvctl doctor\n" + TextOf(Judge(PackagingExample())) + "```\n"));
}

TEST(DoctorReport, PutsTheFixBelowTheProblem)
{
    std::string const text = TextOf(Judge(PackagingExample()));
    EXPECT_THAT(
        text, HasSubstr("\n"
                        "wrong    group      user jo does not belong to the group zviptv-apps\n"
                        "    The bus refuses every call that an application of this user makes. To "
                        "fix it:\n"
                        "        sudo adduser jo zviptv-apps\n"
                        "        newgrp zviptv-apps\n"
                        "    The second command applies to one shell only. For all programs, log out and in "
                        "again.\n"
                        "wrong    service    nobody owns the name org.corvel.zviptvapi.dbushelper\n"));
    EXPECT_THAT(text, EndsWith("\n2 things are wrong: group, service; fix the first one first\n"));
    EXPECT_EQ(static_cast<int>(CodeOf(Judge(PackagingExample()))), 4);
}

TEST(DoctorReport, ShowsOnlyTheNoteIfNoCommandFixesTheProblem)
{
    EXPECT_THAT(TextOf(Judge(WithoutBus(HealthyMachine(), Reach::Refused, "closed"))),
                HasSubstr("\n    An application of this user finds no service.\n    A policy in "));
}

TEST(DoctorReport, EndsWithASummary)
{
    EXPECT_THAT(TextOf(Judge(HealthyMachine())), EndsWith("so.1.4.0)\nnothing is wrong\n"));
    EXPECT_THAT(TextOf(Judge(MachineWithoutService())), EndsWith("\nwrong: service\n"));
    Facts facts = HealthyMachine();
    facts.service.userId.reset();
    EXPECT_THAT(TextOf(Judge(facts)), EndsWith("\nno problem was found; unknown: owner\n"));
}

TEST(DoctorReport, HasTheSameContentInJson)
{
    Json::Value const json = JsonOf(Judge(PackagingExample()));
    EXPECT_FALSE(json["result"].asBool());
    EXPECT_EQ(json["error"].asString(),
              "user jo does not belong to the group zviptv-apps; nobody owns the name "
              "org.corvel.zviptvapi.dbushelper");
    EXPECT_EQ(json["summary"].asString(), "2 things are wrong: group, service; fix the first one first");
    ASSERT_EQ(json["checks"].size(), 11U);
    Json::Value const& group = json["checks"][3];
    EXPECT_EQ(group["check"].asString(), "group");
    EXPECT_EQ(group["state"].asString(), "wrong");
    EXPECT_EQ(group["text"].asString(), "user jo does not belong to the group zviptv-apps");
    EXPECT_EQ(group["meaning"].asString(),
              "The bus refuses every call that an application of this user makes.");
    EXPECT_EQ(group["commands"][0].asString(), "sudo adduser jo zviptv-apps");
    EXPECT_EQ(group["commands"][1].asString(), "newgrp zviptv-apps");
    EXPECT_THAT(group["note"].asString(), EndsWith("log out and in again."));
    Json::Value const& bus = json["checks"][0];
    EXPECT_EQ(bus["state"].asString(), "ok");
    EXPECT_TRUE(bus["meaning"].isNull());
    EXPECT_TRUE(bus["note"].isNull());
    EXPECT_EQ(bus["commands"].size(), 0U);
    EXPECT_EQ(json["checks"][5]["state"].asString(), "unknown");
}

TEST(DoctorReport, HasNoErrorInJsonWhenNothingIsWrong)
{
    Json::Value const json = JsonOf(Judge(HealthyMachine()));
    EXPECT_TRUE(json["result"].asBool());
    EXPECT_EQ(json["summary"].asString(), "nothing is wrong");
    EXPECT_FALSE(json.isMember("error"));
}

/// Texts of a bus or a service must not control a terminal.
TEST(DoctorReport, EscapesForeignTexts)
{
    Facts facts = HealthyMachine();
    facts.service.outcome = Outcome::Failed;
    facts.service.error = "no\x1b[2J\nway";
    EXPECT_THAT(TextOf(Judge(facts)), HasSubstr("no\\x1b[2J\\nway\n"));
    EXPECT_THAT(JsonOf(Judge(facts))["error"].asString(), EndsWith("no\x1b[2J\nway"));
}

} // namespace
} // namespace zviptv::test
