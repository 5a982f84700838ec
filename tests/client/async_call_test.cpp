// SPDX-License-Identifier: MIT
#include "ClientTest.h"

using namespace zviptv;
using namespace zviptv::test;

namespace {

TEST_F(TelevisionTest, ABlockingCallSendsTheRequestAndNeedsNoLoop)
{
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    WireMessage const request = m_service->LastRequest();
    EXPECT_EQ(request.path, "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL");
    EXPECT_EQ(request.entries, Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}));
}

TEST_F(TelevisionTest, ACallThatDoesNotBlockConnectsAndRunsItsCompletion)
{
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take());
    EXPECT_FALSE(outcome.IsThere());
    ASSERT_TRUE(outcome.Await());
    EXPECT_TRUE(Succeeded(*outcome));
    EXPECT_EQ(m_service->LastRequest().entries,
              Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}));
}

} // namespace
