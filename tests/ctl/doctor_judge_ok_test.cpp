// SPDX-License-Identifier: MIT
#include "DoctorFacts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

using namespace ctl::doctor;
using testing::StartsWith;

Finding FindingOf(Facts const& facts, std::string const& check)
{
    for (Finding const& finding : Judge(facts)) {
        if (finding.check == check) {
            return finding;
        }
    }
    throw std::logic_error("no such check: " + check);
}

void ExpectFinding(Facts const& facts, std::string const& check, State state, std::string const& text)
{
    Finding const finding = FindingOf(facts, check);
    EXPECT_EQ(static_cast<int>(finding.state), static_cast<int>(state)) << check;
    EXPECT_EQ(finding.text, text);
    EXPECT_EQ(static_cast<int>(finding.code), 0);
    EXPECT_TRUE(finding.commands.empty());
}

TEST(DoctorJudge, AHealthyMachinePassesAllChecks)
{
    for (Facts const& facts : {HealthyMachine(), HealthySimulator()}) {
        for (Finding const& finding : Judge(facts)) {
            EXPECT_EQ(static_cast<int>(finding.state), static_cast<int>(State::Ok)) << finding.check;
            EXPECT_NE(finding.text, "") << finding.check;
        }
    }
}

TEST(DoctorJudge, ChecksOnlyTheVersionWithoutABus)
{
    for (Finding const& finding : Judge(WithoutBus(HealthyMachine(), Reach::Absent, "no such file"))) {
        bool const isLookedAt = finding.check == "bus" || finding.check == "version";
        EXPECT_EQ(finding.state != State::Unknown, isLookedAt) << finding.check;
        EXPECT_EQ(finding.text == "not checked: there is no connection to a bus", !isLookedAt)
            << finding.check;
    }
}

TEST(DoctorJudge, SkipsTheServiceChecksWithoutAService)
{
    for (char const* const check : {"owner", "main loop", "protocol", "endpoints", "requests"}) {
        ExpectFinding(MachineWithoutService(), check, State::Unknown, "not checked: there is no service");
    }
    ExpectFinding(MachineWithoutService(), "group", State::Ok, "user jo belongs to the group zviptv-apps");
}

TEST(DoctorJudge, ABusThatStopsAnsweringLeavesResultsUnknown)
{
    Facts facts = HealthyMachine();
    facts.policy.deniesByDefault.reset();
    facts.service = {};
    ExpectFinding(facts, "policy", State::Unknown, "the bus does not report whether it needs a policy");
    ExpectFinding(facts, "service", State::Unknown, "the bus does not report whether there is a service");
    facts = HealthyMachine();
    facts.policy.isLoaded.reset();
    ExpectFinding(facts, "policy", State::Unknown, "the bus does not report whether it is loaded");
    facts.service.userId.reset();
    ExpectFinding(facts, "owner", State::Unknown, "the bus does not report which user runs the service");
}

TEST(DoctorJudge, AnOpenBusNeedsNoPolicy)
{
    for (char const* const check : {"accounts", "policy", "group"}) {
        ExpectFinding(HealthySimulator(), check, State::Ok,
                      "not needed: this bus lets everybody call everybody");
    }
    ExpectFinding(HealthySimulator(), "owner", State::Ok,
                  "user jo; on this bus any user may run the service");
}

/// For the files of an integrator in /etc/dbus-1/system.d, only their effect counts.
TEST(DoctorJudge, AcceptsAnotherPolicyThatLetsTheUserCall)
{
    Facts facts = HealthyMachine();
    facts.caller.isListed = facts.caller.isMember = false;
    facts.policy.isLoaded = false;
    ExpectFinding(facts, "group", State::Ok, "not needed: the bus lets user jo call the service");
    ExpectFinding(facts, "policy", State::Ok,
                  "the packages' policy is not loaded, but another policy lets user jo call the service");
}

TEST(DoctorJudge, RootNeedsNoGroup)
{
    Facts facts = MachineWithoutService();
    facts.caller = {"root", true, false, false, false};
    ExpectFinding(facts, "group", State::Ok, "root needs no group");
}

TEST(DoctorJudge, TheServicesUserIsNotAnApplication)
{
    Facts facts = HealthyMachine();
    facts.caller = {"zviptv", false, true, false, false};
    facts.service.outcome = Outcome::Forbidden;
    ExpectFinding(facts, "group", State::Unknown,
                  "not checked: user zviptv runs the service, not applications");
    ExpectFinding(facts, "main loop", State::Unknown,
                  "not checked: the bus does not let the service's user call it; run the command as root");
    ExpectFinding(facts, "policy", State::Ok,
                  "loaded (/usr/share/dbus-1/system.d/org.corvel.zviptvapi.dbushelper.conf)");
}

TEST(DoctorJudge, ARefusedUserCannotCheckTheMainLoop)
{
    Facts facts = HealthyMachine();
    facts.caller.isListed = facts.caller.isMember = false;
    facts.service.outcome = Outcome::Forbidden;
    ExpectFinding(facts, "main loop", State::Unknown,
                  "not checked: the bus does not let user jo call the service");
    ExpectFinding(facts, "protocol", State::Unknown, "not checked: the service has not answered");
}

/// GLib's thread answers that the method is unknown.
TEST(DoctorJudge, AnErrorDoesNotShowAMainLoop)
{
    Facts facts = HealthyMachine();
    facts.service.outcome = Outcome::Failed;
    ExpectFinding(facts, "main loop", State::Unknown,
                  "the service answered with an error, which does not show whether it works");
}

TEST(DoctorJudge, ALibraryWithoutVersionInItsNameIsUnknown)
{
    Facts facts = HealthyMachine();
    facts.versions.loaded = "";
    facts.versions.loadedFile = "/opt/tv/application";
    ExpectFinding(facts, "version", State::Unknown,
                  "zviptvctl 1.4.0; the name of /opt/tv/application does not contain a version");
}

TEST(DoctorJudge, OtherNamesAreUsedThroughout)
{
    Facts facts = MachineWithoutService();
    facts.accounts.names = {"tvd", "tvapps"};
    facts.machine.runsSystemd = false;
    EXPECT_THAT(FindingOf(facts, "service").commands.front(), StartsWith("sudo -u tvd /usr/bin/zviptv-sim "));
    facts.caller.isListed = facts.caller.isMember = false;
    EXPECT_EQ(FindingOf(facts, "group").commands.front(), "sudo adduser jo tvapps");
}

TEST(DoctorJudge, CommandsAreQuoted)
{
    Facts facts = MachineWithoutService();
    facts.caller.isListed = facts.caller.isMember = false;
    facts.caller.name = "jo; reboot";
    EXPECT_EQ(FindingOf(facts, "group").commands.front(), "sudo adduser 'jo; reboot' zviptv-apps");
}

} // namespace
} // namespace zviptv::test
