// SPDX-License-Identifier: MIT
#include "session/Explanations.h"

#include <gtest/gtest.h>

using namespace zviptv::ctl;

namespace {

TEST(ExplanationsTest, EndpointsHaveNames)
{
    EXPECT_EQ(MissingEndpoint("MuteAudio"), "this service has no player control endpoint (PLAYERCONTROL)");
    EXPECT_EQ(MissingEndpoint("GetTTX"), "this service has no broadcast data endpoint (BROADCASTDATA)");
    EXPECT_EQ(MissingEndpoint("SubscribeForPES"),
              "this service has no data subscriber endpoint (IPTVDATASUBSCRIBER)");
    EXPECT_EQ(MissingEndpoint("GetGenre"), "this service has no programme guide endpoint (IPGUTIL)");
}

} // namespace
