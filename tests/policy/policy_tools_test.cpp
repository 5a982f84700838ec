// SPDX-License-Identifier: MIT
#include "PolicyTools.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

using testing::AllOf;
using testing::HasSubstr;

namespace zviptv::test {

TEST_F(PolicyToolsTest, ApplicationsUseTheServiceAndStrangersAreRefused)
{
    auto const simulator = RunSimulator(m_bus->Address(), service);
    ASSERT_TRUE(m_bus->Connect(application)->WaitForOwner(HelperName, true)) << simulator->Errors();

    auto const call = Run(application, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(call->Wait(patience), (ExitStatus{0, 0})) << call->Errors();
    auto const pushed = Run(SecondApplication, {ZVIPTV_CTL, "pes", "--count", "3"});
    EXPECT_EQ(pushed->Wait(patience), (ExitStatus{0, 0})) << pushed->Errors();
    auto const asRoot = Run(root, {ZVIPTV_CTL, "call", "GetSourceState"});
    EXPECT_EQ(asRoot->Wait(patience), (ExitStatus{0, 0})) << asRoot->Errors();

    auto const refused = Run(stranger, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(refused->Wait(patience), (ExitStatus{4, 0})) << refused->Errors();
    EXPECT_THAT(refused->Errors(), AllOf(HasSubstr("AccessDenied"), HasSubstr("policy")));
}

/// The simulator confirms each push by a call to the application, which the policy must also allow.
TEST_F(PolicyToolsTest, AServiceWithoutTheLibraryWorks)
{
    auto const python = Run(service, {ZVIPTV_PYTHON_SERVICE});
    ASSERT_TRUE(m_bus->Connect(application)->WaitForOwner(HelperName, true)) << python->Errors();

    auto const call = Run(application, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(call->Wait(patience), (ExitStatus{0, 0})) << call->Errors();
    auto const pushed = Run(application, {ZVIPTV_CTL, "pes", "--count", "3"});
    EXPECT_EQ(pushed->Wait(patience), (ExitStatus{0, 0})) << pushed->Errors();

    auto const refused = Run(stranger, {ZVIPTV_PYTHON_SERVICE});
    EXPECT_EQ(refused->Wait(patience), (ExitStatus{1, 0}));
    EXPECT_THAT(refused->Errors(), AllOf(HasSubstr(HelperName), HasSubstr("policy")));
}

/// Only root and the simulator's user may control it.
TEST_F(PolicyToolsTest, OnlyAllowedUsersControlTheSimulator)
{
    auto const simulator = RunSimulator(m_bus->Address(), service);
    ASSERT_TRUE(m_bus->Connect(root)->WaitForOwner("org.corvel.zviptvapi.Simulator", true))
        << simulator->Errors();

    for (Account const& account : {root, service}) {
        auto const control = Run(account, {ZVIPTV_CTL, "sim", "speed", "2"});
        EXPECT_EQ(control->Wait(patience), (ExitStatus{0, 0})) << control->Errors();
    }
    for (Account const& account : {application, stranger}) {
        for (std::vector<std::string> const& words :
             {std::vector<std::string>{"speed", "2"}, {"status"}, {"quit"}}) {
            std::vector<std::string> command{ZVIPTV_CTL, "sim"};
            command.insert(command.end(), words.begin(), words.end());
            auto const refused = Run(account, command);
            EXPECT_EQ(refused->Wait(patience), (ExitStatus{4, 0})) << refused->Errors();
            EXPECT_THAT(refused->Errors(), HasSubstr("does not let this user control the simulator"));
        }
        EXPECT_THROW(m_bus->Connect(account)->OwnName("org.corvel.zviptvapi.Simulator"), std::runtime_error);
    }
}

/// Reports about applications are not public: only root receives the signal, which is sent to all.
TEST_F(PolicyToolsTest, OnlyAllowedUsersReceiveItsSignals)
{
    auto const simulator = RunSimulator(m_bus->Address(), service);
    auto const asRoot = m_bus->Connect(root);
    auto const asStranger = m_bus->Connect(stranger);
    ASSERT_TRUE(asRoot->WaitForOwner("org.corvel.zviptvapi.Simulator", true)) << simulator->Errors();
    for (auto const* const peer : {&asRoot, &asStranger}) {
        (*peer)->AddMatch("type='signal',sender='org.corvel.zviptvapi.Simulator'");
        (*peer)->AddMatch("type='signal',member='Last'");
        (*peer)->Sync();
    }
    auto const control = Run(root, {ZVIPTV_CTL, "sim", "pause"});
    EXPECT_EQ(control->Wait(patience), (ExitStatus{0, 0})) << control->Errors();
    ASSERT_TRUE(asRoot->WaitFor(IsSignal("PropertiesChanged")));
    asRoot->Emit({"", "/", "org.example.Test", "Last"}); // nothing sent before it can arrive after it
    ASSERT_TRUE(asStranger->WaitFor(IsSignal("Last")));
    EXPECT_EQ(asStranger->Received().Count(IsSignal("PropertiesChanged")), 0U);
}

TEST_F(PolicyToolsTest, TheSimulatorReportsThatItMayNotOwnTheName)
{
    auto const simulator = RunSimulator(m_bus->Address(), stranger);
    EXPECT_EQ(simulator->Wait(patience), (ExitStatus{1, 0}));
    EXPECT_THAT(simulator->Errors(), AllOf(HasSubstr(HelperName), HasSubstr("policy")));
}

/// The bus allows it for root; others get a message with what to do.
TEST_F(PolicyToolsTest, OnlyRootMayTraceTheBus)
{
    auto const asRoot = Run(root, {ZVIPTV_CTL, "trace", "--seconds", "0.1"});
    EXPECT_EQ(asRoot->Wait(patience), (ExitStatus{0, 0})) << asRoot->Errors();
    for (Account const& account : {service, application, stranger}) {
        auto const refused = Run(account, {ZVIPTV_CTL, "trace"});
        EXPECT_EQ(refused->Wait(patience), (ExitStatus{4, 0}));
        EXPECT_THAT(
            refused->Errors(),
            AllOf(HasSubstr("refuses to be watched: "),
                  HasSubstr("; run this command as root, or, on a private bus, as the user who runs it\n")));
    }
}

/// Requests, replies and pushes of all users, under the policy.
TEST_F(PolicyToolsTest, RootSeesWhatApplicationsAndTheServiceExchange)
{
    auto const simulator = RunSimulator(m_bus->Address(), service);
    ASSERT_TRUE(m_bus->Connect(application)->WaitForOwner(HelperName, true)) << simulator->Errors();
    auto const trace = Run(root, {ZVIPTV_CTL, "trace"});
    ASSERT_TRUE(trace->WaitForErrors("; Ctrl-C ends it\n", patience)) << trace->Errors();
    auto const call = Run(application, {ZVIPTV_CTL, "call", "MuteAudio", "true"});
    EXPECT_EQ(call->Wait(patience), (ExitStatus{0, 0})) << call->Errors();
    auto const pushed = Run(SecondApplication, {ZVIPTV_CTL, "pes", "--count", "1"});
    EXPECT_EQ(pushed->Wait(patience), (ExitStatus{0, 0})) << pushed->Errors();
    for (char const* const text :
         {"-> PLAYERCONTROL MuteAudio onoff=true\n", "<- PLAYERCONTROL MuteAudio true (",
          "<- IPTVDATASUBSCRIBER requestPESCB true (", "<< IPTVDATASUBSCRIBER PESCB "}) {
        EXPECT_TRUE(trace->WaitForOutput(text, patience)) << text << trace->Output();
    }
    trace->Signal(SIGINT);
    EXPECT_EQ(trace->Wait(patience), (ExitStatus{0, 0})) << trace->Errors();
}

/// As on another machine, where the user has another number: `ssh -L` and `unshare --user`.
TEST_F(PolicyToolsTest, AForwardedBusIsUsedUnderTheNumberOfItsAccount)
{
    auto const allowed = Run(stranger, {"unshare", "--user", "--map-user=0", "--map-group=0", "true"});
    if (!(allowed->Wait(patience) == ExitStatus{0, 0})) {
        GTEST_SKIP() << "this machine does not let users create user namespaces: " << allowed->Errors();
    }
    auto const simulator = RunSimulator(m_bus->Address(), service);
    ASSERT_TRUE(m_bus->Connect(application)->WaitForOwner(HelperName, true)) << simulator->Errors();
    std::string const socket = m_bus->Directory() + "/forwarded";
    auto const forwarding = Run(root, {ZVIPTV_FORWARD, m_bus->Directory() + "/bus", socket, stranger.name});
    ASSERT_TRUE(forwarding->WaitForOutput("ready\n", patience)) << forwarding->Errors();
    auto const use = [&](std::vector<std::string> command) {
        command.insert(command.end(), {ZVIPTV_CTL, "call", "MuteAudio", "true"});
        return RunAs("unix:path=" + socket, CredentialsOf(stranger), command);
    };
    auto const mapped = use({"unshare", "--user", "--map-user=0", "--map-group=0"});
    EXPECT_EQ(mapped->Wait(patience), (ExitStatus{0, 0})) << mapped->Errors();
    auto const other = use({});
    EXPECT_EQ(other->Wait(patience), (ExitStatus{3, 0}));
    EXPECT_THAT(other->Errors(), HasSubstr("the bus closed the connection"));
    auto const withoutGroup = use({"unshare", "--user", "--map-user=0"});
    EXPECT_EQ(withoutGroup->Wait(patience), (ExitStatus{3, 0}));
    EXPECT_THAT(withoutGroup->Errors(),
                AllOf(HasSubstr("Error sending credentials"), HasSubstr("Invalid argument")));
}

} // namespace zviptv::test
