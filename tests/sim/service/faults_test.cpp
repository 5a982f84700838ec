// SPDX-License-Identifier: MIT
#include "FaultTest.h"

#include <csignal>
#include <future>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(FaultInjection, CorruptsTheNamedValues)
{
    Begin({"MuteAudio=result:0", "GetSourceState=missing:sourcestate", "GetSTCCount=garbage:stcCount",
           "GetResolution=short:resolutioninfo"});
    EXPECT_EQ(Ask("MuteAudio").Value("result_internal"), "0");
    EXPECT_EQ(Ask("MuteVideo").Value("result_internal"), "1");
    WireMessage const state = Ask("GetSourceState");
    EXPECT_EQ(state.Value("result_internal"), "1");
    EXPECT_FALSE(state.Has("sourcestate"));
    EXPECT_EQ(Ask("GetSTCCount").Value("stcCount"), "garbage");
    EXPECT_EQ(Ask("GetResolution").Value("resolutioninfo").size(), 16U);
}

TEST_F(FaultInjection, AnswersWithAnError)
{
    Begin({"*=error"});
    WireMessage const reply = Ask("MuteAudio");
    EXPECT_EQ(reply.kind, WireKind::Error);
    EXPECT_EQ(reply.errorName, InjectedError);
}

/// A late answer does not delay the others, whatever its delay.
TEST_F(FaultInjection, DelaysOneAnswerAndNotTheOthers)
{
    Begin({"MuteAudio=delay:600000", "GetSourceState=delay:300"});
    WirePeer slow;
    std::string const service = m_application.Announce(Type);
    std::future<WireMessage> const late = std::async(std::launch::async, [&slow, &service] {
        return slow.Call({service, ChannelPath(Type), "org.corvel.zviptvapi.DbusCommunication", "Send"},
                         Entries({{"functionname", "MuteAudio"}, {"onoff", "1"}}),
                         CallOptions{std::chrono::minutes(5), false});
    });
    ASSERT_TRUE(m_simulator->WaitForErrors("fault: delay:600000", Patience));
    EXPECT_EQ(Ask("MuteVideo").Value("result_internal"), "1");
    auto const begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Ask("GetSourceState").Value("sourcestate"), "2");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(300));
    EXPECT_EQ(late.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    m_simulator.reset(); // who never answers leaves the bus, which ends the wait
}

TEST_F(FaultInjection, DropsAnAnswer)
{
    Begin({"MuteAudio=drop"});
    EXPECT_EQ(AskWithShortTimeout("MuteAudio").errorName, NoReply);
    EXPECT_EQ(Ask("MuteVideo").Value("result_internal"), "1");
}

TEST(FaultOptions, ErrorsExplainTheOption)
{
    for (char const* const fault :
         {"MuteAudio", "=drop", "MuteAudio=explode", "MuteAudio=delay", "MuteAudio=delay:x",
          "MuteAudio=delay:-1", "MuteAudio=drop:1", "MuteAudio=missing:", "GetAudio=missing:nosuchkey",
          "PESCB=short:audio", "MuteAudio=drop,count=0"}) {
        ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--fault", fault});
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{2, 0})) << fault;
        EXPECT_THAT(process.Errors(),
                    HasSubstr(std::string("zviptv-sim: cannot use the fault '") + fault + "': "));
    }
}

TEST(Supervision, LetsTheServiceDieAndReturn)
{
    ChildProcess process({ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--bus", "private", "--die-after",
                          "0.5", "--restart-after", "0.1"});
    ASSERT_TRUE(process.WaitForOutput("export DBUS_SYSTEM_BUS_ADDRESS='", Patience));
    std::string const output = process.Output();
    std::size_t const at = output.find("='") + 2;
    WirePeer watcher(output.substr(at, output.find('\'', at) - at));
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", true, Patience));
        ASSERT_TRUE(watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", false, Patience));
    }
    process.Signal(SIGTERM);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0}));
    EXPECT_THAT(process.Errors(),
                HasSubstr("zviptv-sim: the service dies\nzviptv-sim: the service comes back\n"));
}

/// A terminal's Ctrl-C goes to the whole foreground group.
TEST(Supervision, EndsOrderlyWhenItsGroupIsInterrupted)
{
    ChildProcess process({"setsid", ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--bus", "private", "--quiet"});
    ASSERT_TRUE(process.WaitForOutput("export DBUS_SYSTEM_BUS_ADDRESS='", Patience));
    ASSERT_EQ(kill(-process.Pid(), SIGINT), 0);
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0}));
    EXPECT_THAT(process.Errors(), IsEmpty());
}

} // namespace
} // namespace zviptv::test
