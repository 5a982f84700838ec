// SPDX-License-Identifier: MIT
#include "ChildProcess.h"
#include "PolicyTools.h"
#include "Processes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace zviptv::test {

namespace {

constexpr char const* PackagedPolicy = "/usr/share/dbus-1/system.d/org.corvel.zviptvapi.dbushelper.conf";

/// A process with this user and one group, regardless of the user database.
struct User
{
    char const* name;
    char const* group;
};

constexpr User ApplicationUser{"man", ApplicationGroup};
constexpr User StrangerUser{"nobody", "nogroup"};
constexpr User RootUser{"root", "root"};
constexpr User ServiceUser{"daemon", "daemon"};

/// zviptvctl doctor in processes of different users, on a bus that denies by default.
class PolicyDoctorTest : public PolicyToolsTest
{
protected:
    struct Report
    {
        int code;
        std::string text;
    };

    static std::vector<std::string> Doctor()
    {
        return {ZVIPTV_CTL, "doctor", "--user", service.name, "--group", ApplicationGroup};
    }

    Report Ask(std::string const& address, User const& user,
               std::vector<std::string> const& command = Doctor()) const
    {
        auto const child = RunAs(address, {user.name, user.group, user.group}, command);
        auto const status = child->Wait(patience);
        EXPECT_EQ(child->Errors(), "");
        return {status ? status->code : -1, child->Output()};
    }

    Report Ask(User const& user) const { return Ask(m_bus->Address(), user); }

    /// Starts the simulator as the policy's service user, or as another user.
    void StartSimulator(PolicyBus const& bus, Account const& account)
    {
        m_simulator = RunSimulator(bus.Address(), account);
        ASSERT_TRUE(bus.Connect(account)->WaitForOwner(HelperName, true)) << m_simulator->Errors();
    }

    std::unique_ptr<ChildProcess> m_simulator;
};

} // namespace

TEST_F(PolicyDoctorTest, FindsNothingWrongForAnApplicationAndForRoot)
{
    StartSimulator(*m_bus, service);
    Report const asMember = Ask(ApplicationUser);
    EXPECT_EQ(asMember.code, 0) << asMember.text;
    EXPECT_THAT(asMember.text, HasSubstr("\nok       accounts   user daemon and group games exist\n"
                                         "ok       policy     loaded"));
    EXPECT_THAT(asMember.text, HasSubstr("\nok       group      user man belongs to the group games\n"));
    EXPECT_THAT(asMember.text, HasSubstr(", process " + std::to_string(OnlyChildOf(m_simulator->Pid())) +
                                         " (zviptv-sim)\n"
                                         "ok       owner      user daemon\n"
                                         "ok       main loop  the service "
                                         "answers\n"));
    EXPECT_THAT(asMember.text, testing::EndsWith("\nnothing is wrong\n"));

    Report const asRoot = Ask(RootUser);
    EXPECT_EQ(asRoot.code, 0) << asRoot.text;
    EXPECT_THAT(asRoot.text, HasSubstr("\nok       group      root needs no group\n"));
}

TEST_F(PolicyDoctorTest, AdvisesAStrangerToJoinTheGroup)
{
    StartSimulator(*m_bus, service);
    Report const report = Ask(StrangerUser);
    EXPECT_EQ(report.code, 4) << report.text;
    EXPECT_THAT(report.text, HasSubstr("\nok       policy     loaded"));
    EXPECT_THAT(report.text,
                HasSubstr("\nwrong    group      user nobody does not belong to the group games\n"));
    EXPECT_THAT(report.text, HasSubstr("\n        sudo adduser nobody games\n        newgrp games\n"));
    EXPECT_THAT(report.text,
                HasSubstr("\nunknown  main loop  not checked: the bus does not let user nobody call the "
                          "service\n"));
    EXPECT_THAT(report.text, HasSubstr("\nwrong: group\n"));
}

/// The database lists the user "games" in the group "games", but this process is not in it.
TEST_F(PolicyDoctorTest, AdvisesANewMemberToLogInAgain)
{
    StartSimulator(*m_bus, service);
    Report const report = Ask({"games", "nogroup"});
    EXPECT_EQ(report.code, 4) << report.text;
    EXPECT_THAT(
        report.text,
        HasSubstr("\nwrong    group      user games was added to the group games after this process's "
                  "login\n"));
    EXPECT_THAT(report.text, HasSubstr("\n        newgrp games\n"));
    EXPECT_THAT(report.text, Not(HasSubstr("adduser")));
}

TEST_F(PolicyDoctorTest, TheServicesUserIsNotAnApplication)
{
    StartSimulator(*m_bus, service);
    Report const report = Ask(ServiceUser);
    EXPECT_EQ(report.code, 0) << report.text;
    EXPECT_THAT(report.text, HasSubstr("\nok       policy     loaded"));
    EXPECT_THAT(report.text, HasSubstr("\nunknown  group      not checked: user daemon runs the service"));
    EXPECT_THAT(report.text, HasSubstr("no problem was found; unknown: group, main loop"));
}

TEST_F(PolicyDoctorTest, ReportsAServiceThatDoesNotRun)
{
    Report const report = Ask(ApplicationUser);
    EXPECT_EQ(report.code, 3) << report.text;
    EXPECT_THAT(report.text, HasSubstr("\nwrong: service\n"));
    EXPECT_THAT(report.text, HasSubstr("\n        sudo -u daemon zviptv-sim --bus system --ts "));
}

TEST_F(PolicyDoctorTest, DistinguishesAnUnloadedPolicyFromAMissingGroup)
{
    BusOptions options;
    options.openPolicy = false;
    options.baseConfig = "/usr/share/dbus-1/system.conf";
    PrivateBus const stock(options);
    chmod(stock.Directory().c_str(), 0711);
    if (std::filesystem::exists(PackagedPolicy)) {
        GTEST_SKIP() << "every stock bus here loads " << PackagedPolicy;
    }
    for (User const& user : {ApplicationUser, RootUser, ServiceUser}) {
        Report const report = Ask(stock.Address(), user);
        EXPECT_EQ(report.code, 4) << user.name << '\n' << report.text;
        EXPECT_THAT(report.text,
                    HasSubstr("\nwrong    policy     the bus has loaded no policy for the service, "
                              "and none is installed\n"));
        EXPECT_THAT(report.text, HasSubstr("apt-get install libzv-iptv-service-api1\n"));
        EXPECT_THAT(report.text, Not(HasSubstr("wrong    group")));
    }
}

/// Root and the service's user can check the rules; others only see that the policy is loaded.
TEST_F(PolicyDoctorTest, ReportsAPolicyLoadedBeforeTheUserExisted)
{
    PolicyBus const bus({}, "zviptv-nobody-yet");
    for (User const& user : {RootUser, ServiceUser}) {
        Report const report = Ask(bus.Address(), user);
        EXPECT_EQ(report.code, 4) << user.name << '\n' << report.text;
        EXPECT_THAT(
            report.text,
            HasSubstr("\nwrong    policy     the bus has loaded the policy, but not for user daemon\n"));
        EXPECT_THAT(report.text, HasSubstr("dbus-send --system --print-reply --dest=org.freedesktop.DBus / "
                                           "org.freedesktop.DBus.ReloadConfig\n"));
    }
    EXPECT_THAT(Ask(bus.Address(), ApplicationUser).text, HasSubstr("\nok       policy     loaded"));
}

TEST_F(PolicyDoctorTest, ReportsAPolicyThatForbidsTheGroup)
{
    PolicyBus const bus("<policy group=\"games\"><deny send_destination=\"org.corvel.zviptvapi.dbushelper\"/>"
                        "</policy>");
    StartSimulator(bus, service);
    Report const report = Ask(bus.Address(), ApplicationUser);
    EXPECT_EQ(report.code, 4) << report.text;
    EXPECT_THAT(report.text,
                HasSubstr("\nwrong    policy     the bus has loaded the policy, but does not let "
                          "user man of the group games call the service\n"));
    EXPECT_THAT(report.text, HasSubstr("\n    An application gets no answer: "
                                       "org.freedesktop.DBus.Error.AccessDenied"));
}

TEST_F(PolicyDoctorTest, ReportsTheWrongOwnerOfTheName)
{
    PolicyBus const bus("<policy user=\"root\"><allow own=\"org.corvel.zviptvapi.dbushelper\"/></policy>");
    StartSimulator(bus, root);
    Report const report = Ask(bus.Address(), ApplicationUser);
    EXPECT_EQ(report.code, 4) << report.text;
    EXPECT_THAT(report.text,
                HasSubstr("\nwrong    owner      the service runs as user root, not as daemon\n"));
    EXPECT_THAT(report.text,
                HasSubstr("\n        sudo kill -KILL " + std::to_string(OnlyChildOf(m_simulator->Pid())) +
                          "\n        sudo -u daemon zviptv-sim --bus system --ts "));
    EXPECT_THAT(report.text, HasSubstr("\nwrong: owner\n"));
}

TEST_F(PolicyDoctorTest, ReportsMissingAccounts)
{
    Report const report = Ask(m_bus->Address(), StrangerUser,
                              {ZVIPTV_CTL, "doctor", "--user", "zviptv-none", "--group", "zviptv-none-apps"});
    EXPECT_EQ(report.code, 4) << report.text;
    EXPECT_THAT(
        report.text,
        HasSubstr("\nwrong    accounts   there is no user zviptv-none and no group zviptv-none-apps\n"));
    EXPECT_THAT(report.text,
                HasSubstr("\nunknown  group      not checked: there is no group zviptv-none-apps"));
}

TEST_F(PolicyDoctorTest, ReportsARefusedUser)
{
    BusOptions options;
    options.openPolicy = false;
    options.extraConfig = "<policy context=\"default\"><allow user=\"root\"/></policy>";
    PrivateBus const closed(options);
    chmod(closed.Directory().c_str(), 0711);
    Report const report = Ask(closed.Address(), StrangerUser);
    EXPECT_EQ(report.code, 3) << report.text;
    EXPECT_THAT(report.text, StartsWith("wrong    bus        the bus at " + closed.Address() +
                                        " (DBUS_SYSTEM_BUS_ADDRESS) does not let user nobody in: "));
}

TEST_F(PolicyDoctorTest, ReportsAUserWhoMayNotOpenTheSocket)
{
    PrivateBus const hidden;
    chmod(hidden.Directory().c_str(), 0700);
    Report const report = Ask(hidden.Address(), StrangerUser);
    EXPECT_EQ(report.code, 3) << report.text;
    EXPECT_THAT(report.text, HasSubstr(" does not let user nobody in: "));
}

} // namespace zviptv::test
