// SPDX-License-Identifier: MIT
#include "Remote.h"

namespace zviptv::test {
namespace {

class ControlSignals : public ControlTest
{
protected:
    Application m_application;
};

TEST_F(ControlSignals, ReportEveryRequestAndItsResult)
{
    StartControlled({"--loop", "--fault", "MuteVideo=error"});
    m_application.Announce("PLAYERCONTROL");
    m_application.Ask("PLAYERCONTROL", {{"functionname", "MuteAudio"}, {"handleID", "1"}, {"onoff", "1"}});
    m_application.Ask("PLAYERCONTROL", {{"functionname", "MuteVideo"}, {"handleID", "1"}, {"onoff", "1"}});
    std::string const name = m_application.Peer().Name();
    EXPECT_TRUE(m_remote->WaitForSignal(
        "Request", "('" + name + "', 'PLAYERCONTROL', 'MuteAudio', {'handleID': '1', 'onoff': '1'}, 1, '')"));
    EXPECT_TRUE(m_remote->WaitForSignal(
        "Request",
        "('" + name + "', 'PLAYERCONTROL', 'MuteVideo', {'handleID': '1', 'onoff': '1'}, -1, 'error')"));
}

TEST_F(ControlSignals, ReportChangesOfPropertiesBeforeTheAnswer)
{
    StartControlled();
    m_remote->Forget();
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    bool isReported = false;
    for (Remote::Signal const& signal : m_remote->Signals()) {
        isReported = isReported || (signal.name == "PropertiesChanged" &&
                                    signal.body.find("'Paused': <true>") != std::string::npos);
    }
    EXPECT_TRUE(isReported);
}

TEST_F(ControlSignals, ReportChangesByApplications)
{
    StartControlled();
    m_application.Announce("PLAYERCONTROL");
    EXPECT_TRUE(
        m_remote->WaitForSignal("PropertiesChanged", "'Clients': <['" + m_application.Peer().Name() + "']>"));
    m_application.Ask("PLAYERCONTROL", {{"functionname", "SetAppID"}, {"AppID", "org.example.one"}});
    EXPECT_TRUE(m_remote->WaitForSignal("PropertiesChanged", "'ApplicationId': <'org.example.one'>"));
}

/// Changes of these properties, which happen many times a second, send no signal.
TEST_F(ControlSignals, AreNotSentForValuesThatChangeContinuously)
{
    StartControlled();
    ASSERT_TRUE(WaitUntil([this] { return m_remote->Number("Duration") > 0; }, Patience));
    ASSERT_EQ(m_remote->Call("Seek", "(6.0,)"), Done);
    ASSERT_EQ(m_remote->Call("SetTime", "(1774735200,)"), Done);
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    ASSERT_TRUE(m_remote->WaitForSignal("PropertiesChanged", "'Paused': <true>"));
    std::size_t first = 0; // tells all properties once
    for (Remote::Signal const& signal : m_remote->Signals()) {
        bool const isAll = signal.body.find("'Programmes': ") != std::string::npos;
        first += isAll ? 1 : 0;
        EXPECT_TRUE(isAll || signal.body.find("'Position': ") == std::string::npos) << signal.body;
        EXPECT_TRUE(isAll || signal.body.find("'GuideTime': ") == std::string::npos) << signal.body;
    }
    EXPECT_LE(first, 1U);
}

TEST_F(ControlSignals, ReportDeathAndReturn)
{
    StartControlled();
    ASSERT_EQ(m_remote->Call("Die", "({'for': <0.0>},)"), Done);
    EXPECT_TRUE(m_remote->WaitForSignal("Died"));
    EXPECT_TRUE(m_remote->WaitForSignal("PropertiesChanged", "'Running': <false>"));
    EXPECT_TRUE(m_remote->WaitForSignal("Restarted"));
    EXPECT_TRUE(m_remote->WaitForSignal("PropertiesChanged", "'Running': <true>"));
}

} // namespace
} // namespace zviptv::test
