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

constexpr char const* helperName = "org.corvel.zviptvapi.dbushelper";
constexpr char const* packagedPolicy = "/usr/share/dbus-1/system.d/org.corvel.zviptvapi.dbushelper.conf";

/// A process with this user and one group, regardless of the user database.
struct User
{
    char const* name;
    char const* group;
};

constexpr User applicationUser{"man", applicationGroup};
constexpr User strangerUser{"nobody", "nogroup"};
constexpr User rootUser{"root", "root"};
constexpr User serviceUser{"daemon", "daemon"};

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
        return {ZVIPTV_CTL, "doctor", "--user", service.name, "--group", applicationGroup};
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
        ASSERT_TRUE(bus.Connect(account)->WaitForOwner(helperName, true)) << m_simulator->Errors();
    }

    std::unique_ptr<ChildProcess> m_simulator;
};

} // namespace

TEST_F(PolicyDoctorTest, FindsNothingWrongForAnApplicationAndForRoot)
{
    StartSimulator(*m_bus, service);
    Report const asMember = Ask(applicationUser);
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

    Report const asRoot = Ask(rootUser);
    EXPECT_EQ(asRoot.code, 0) << asRoot.text;
    EXPECT_THAT(asRoot.text, HasSubstr("\nok       group      root needs no group\n"));
}

TEST_F(PolicyDoctorTest, TellsAStrangerToJoinTheGroup)
{
    StartSimulator(*m_bus, service);
    Report const report = Ask(strangerUser);
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
TEST_F(PolicyDoctorTest, TellsWhoJoinedTheGroupTooLateToLogInAgain)
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

TEST_F(PolicyDoctorTest, TheServicesOwnUserIsNoApplication)
{
    StartSimulator(*m_bus, service);
    Report const report = Ask(serviceUser);
    EXPECT_EQ(report.code, 0) << report.text;
    EXPECT_THAT(report.text, HasSubstr("\nok       policy     loaded"));
    EXPECT_THAT(report.text, HasSubstr("\nunknown  group      not checked: user daemon runs the service"));
    EXPECT_THAT(report.text, HasSubstr("nothing is wrong, as far as is known; unknown: group, main loop"));
}

TEST_F(PolicyDoctorTest, NamesTheServiceThatDoesNotRun)
{
    Report const report = Ask(applicationUser);
    EXPECT_EQ(report.code, 3) << report.text;
    EXPECT_THAT(report.text, HasSubstr("\nwrong: service\n"));
    EXPECT_THAT(report.text, HasSubstr("\n        sudo -u daemon zviptv-sim --bus system --ts "));
}

TEST_F(PolicyDoctorTest, TellsAPolicyThatIsNotLoadedFromAMissingGroup)
{
    BusOptions options;
    options.openPolicy = false;
    options.baseConfig = "/usr/share/dbus-1/system.conf";
    PrivateBus const stock(options);
    chmod(stock.Directory().c_str(), 0711);
    if (std::filesystem::exists(packagedPolicy)) {
        GTEST_SKIP() << "every stock bus here loads " << packagedPolicy;
    }
    for (User const& user : {applicationUser, rootUser, serviceUser}) {
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
TEST_F(PolicyDoctorTest, TellsAPolicyThatWasLoadedBeforeTheUserWasMade)
{
    PolicyBus const bus({}, "zviptv-nobody-yet");
    for (User const& user : {rootUser, serviceUser}) {
        Report const report = Ask(bus.Address(), user);
        EXPECT_EQ(report.code, 4) << user.name << '\n' << report.text;
        EXPECT_THAT(
            report.text,
            HasSubstr("\nwrong    policy     the bus has loaded the policy, but not for user daemon\n"));
        EXPECT_THAT(report.text, HasSubstr("dbus-send --system --print-reply --dest=org.freedesktop.DBus / "
                                           "org.freedesktop.DBus.ReloadConfig\n"));
    }
    EXPECT_THAT(Ask(bus.Address(), applicationUser).text, HasSubstr("\nok       policy     loaded"));
}

TEST_F(PolicyDoctorTest, TellsAPolicyThatForbidsTheGroup)
{
    PolicyBus const bus("<policy group=\"games\"><deny send_destination=\"org.corvel.zviptvapi.dbushelper\"/>"
                        "</policy>");
    StartSimulator(bus, service);
    Report const report = Ask(bus.Address(), applicationUser);
    EXPECT_EQ(report.code, 4) << report.text;
    EXPECT_THAT(report.text,
                HasSubstr("\nwrong    policy     the bus has loaded the policy, but does not let "
                          "user man of the group games call the service\n"));
    EXPECT_THAT(report.text, HasSubstr("\n    An application gets no answer: "
                                       "org.freedesktop.DBus.Error.AccessDenied"));
}

TEST_F(PolicyDoctorTest, NamesTheWrongUserWhoOwnsTheName)
{
    PolicyBus const bus("<policy user=\"root\"><allow own=\"org.corvel.zviptvapi.dbushelper\"/></policy>");
    StartSimulator(bus, root);
    Report const report = Ask(bus.Address(), applicationUser);
    EXPECT_EQ(report.code, 4) << report.text;
    EXPECT_THAT(report.text,
                HasSubstr("\nwrong    owner      the service runs as user root, not as daemon\n"));
    EXPECT_THAT(report.text,
                HasSubstr("\n        sudo kill -KILL " + std::to_string(OnlyChildOf(m_simulator->Pid())) +
                          "\n        sudo -u daemon zviptv-sim --bus system --ts "));
    EXPECT_THAT(report.text, HasSubstr("\nwrong: owner\n"));
}

TEST_F(PolicyDoctorTest, NamesTheAccountsThatAreNotThere)
{
    Report const report = Ask(m_bus->Address(), strangerUser,
                              {ZVIPTV_CTL, "doctor", "--user", "zviptv-none", "--group", "zviptv-none-apps"});
    EXPECT_EQ(report.code, 4) << report.text;
    EXPECT_THAT(
        report.text,
        HasSubstr("\nwrong    accounts   there is no user zviptv-none and no group zviptv-none-apps\n"));
    EXPECT_THAT(report.text,
                HasSubstr("\nunknown  group      not checked: there is no group zviptv-none-apps"));
}

TEST_F(PolicyDoctorTest, NamesTheUserWhoIsNotLetIn)
{
    BusOptions options;
    options.openPolicy = false;
    options.extraConfig = "<policy context=\"default\"><allow user=\"root\"/></policy>";
    PrivateBus const closed(options);
    chmod(closed.Directory().c_str(), 0711);
    Report const report = Ask(closed.Address(), strangerUser);
    EXPECT_EQ(report.code, 3) << report.text;
    EXPECT_THAT(report.text, StartsWith("wrong    bus        the bus at " + closed.Address() +
                                        " (DBUS_SYSTEM_BUS_ADDRESS) does not let user nobody in: "));
}

TEST_F(PolicyDoctorTest, NamesTheUserWhoMayNotOpenTheSocket)
{
    PrivateBus const hidden;
    chmod(hidden.Directory().c_str(), 0700);
    Report const report = Ask(hidden.Address(), strangerUser);
    EXPECT_EQ(report.code, 3) << report.text;
    EXPECT_THAT(report.text, HasSubstr(" does not let user nobody in: "));
}

} // namespace zviptv::test
