// SPDX-License-Identifier: MIT
#include "Remote.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// A service or simulator that is stopped, and does not answer.
class ServiceHang : public ControlTest
{
protected:
    static int CodeOf(ChildProcess& process)
    {
        return process.Wait(Patience).value_or(ExitStatus{-1, -1}).code;
    }
};

TEST_F(ServiceHang, OfTheServiceKeepsItsLastReport)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("SetSpeed", "(2.0,)"), Done);
    EXPECT_EQ(m_remote->Get("Responding"), "true");
    pid_t const service = NewService();
    ASSERT_EQ(kill(service, SIGSTOP), 0);
    ChildProcess status({ZVIPTVCTL, "sim", "status"});
    EXPECT_EQ(CodeOf(status), 0) << status.Errors();
    EXPECT_THAT(status.Output(), HasSubstr("\nResponding:      no\n"));
    EXPECT_THAT(status.Output(), HasSubstr("\nSpeed:           2\n"));
    EXPECT_EQ(m_remote->Get("Running"), "true");
    EXPECT_TRUE(m_remote->WaitForSignal("PropertiesChanged", "'Responding': <false>"));
    ASSERT_EQ(kill(service, SIGCONT), 0);
    EXPECT_TRUE(m_remote->WaitFor("Responding", "true"));
    EXPECT_TRUE(m_remote->WaitForSignal("PropertiesChanged", "'Responding': <true>"));
}

/// Takes 15 seconds.
TEST_F(ServiceHang, OfTheServiceEndsCallsWithAdvice)
{
    StartControlled();
    pid_t const service = NewService();
    ASSERT_EQ(kill(service, SIGSTOP), 0);
    ChildProcess reset({ZVIPTVCTL, "sim", "reset"});
    std::string const text = "the service has not answered for 15 seconds; resume it with 'kill -CONT " +
                             std::to_string(service) +
                             "' if it is stopped, or replace it with 'zviptvctl sim restart'";
    EXPECT_EQ(m_remote->Call("Pause"), TimedOut + text);
    EXPECT_EQ(CodeOf(reset), 4);
    EXPECT_EQ(reset.Errors(), "zviptvctl: " + text + "\n");
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_EQ(m_remote->Get("Responding"), "true");
    EXPECT_NE(NewService(service), 0);
}

/// Takes 15 seconds.
TEST_F(ServiceHang, OfAStartingServiceEndsCallsWithAdvice)
{
    StartControlled();
    ChildProcess restart({ZVIPTVCTL, "sim", "restart"});
    ASSERT_TRUE(m_remote->WaitForSignal("Died"));
    StopStartingService(m_simulator->Pid());
    ASSERT_EQ(m_remote->Get("Running"), "false");
    EXPECT_THAT(
        m_remote->Call("Pause"),
        StartsWith(std::string(TimedOut) + "the service has not answered for 15 seconds; resume it with "));
    EXPECT_EQ(CodeOf(restart), 4);
    EXPECT_THAT(restart.Errors(), HasSubstr("or replace it with 'zviptvctl sim restart'\n"));
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    EXPECT_EQ(m_remote->Get("Paused"), "false"); // a call that has failed changes nothing
}

TEST_F(ServiceHang, OfTheSimulatorEndsStatus)
{
    StartControlled();
    ASSERT_EQ(kill(m_simulator->Pid(), SIGSTOP), 0);
    ChildProcess status({ZVIPTVCTL, "sim", "status"});
    EXPECT_EQ(CodeOf(status), 4);
    EXPECT_EQ(status.Errors(),
              "zviptvctl: the simulator does not answer; check whether its process is stopped "
              "('kill -CONT PID' resumes it), or start another one\n");
    ASSERT_EQ(kill(m_simulator->Pid(), SIGCONT), 0);
    EXPECT_EQ(m_remote->Get("Responding"), "true");
}

} // namespace
} // namespace zviptv::test
