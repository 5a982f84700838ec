// SPDX-License-Identifier: MIT
#include "session/LogCollector.h"

#include "PrivateBus.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/IPTVServiceAPI.h>
#include <zviptv/ProxyDBusHelper.h>

#include <gtest/gtest.h>

using zviptv::ctl::LogCollector;

namespace {

/// The lines are made by the library itself: that it words them so is what the collector relies on.
class LogCollectorTest : public testing::Test
{
protected:
    zviptv::test::PrivateBus m_bus;
    LogCollector m_log{false};
};

TEST_F(LogCollectorTest, KnowsNothingAtFirst)
{
    EXPECT_FALSE(m_log.SendFailed());
    EXPECT_FALSE(m_log.TakePlayerControlGone());
    EXPECT_FALSE(m_log.LacksEndpoint());
    EXPECT_EQ(m_log.Reason(), "there is no connection to the service's endpoint");
}

TEST_F(LogCollectorTest, SeesAnExchangeFailAndWhyTheAnnouncementDid)
{
    IIPGUtil* guide = nullptr;
    CIPTVServiceAPI::CreateIPGUtil(&guide);
    std::string rating;
    EXPECT_FALSE(guide->GetRating(1, rating));
    EXPECT_TRUE(m_log.SendFailed());
    EXPECT_EQ(m_log.Reason(), "the service did not take the connection: it does not run");
    EXPECT_FALSE(m_log.LacksEndpoint());
    m_log.ForgetCall();
    EXPECT_FALSE(m_log.SendFailed());
    CIPTVServiceAPI::DestroyIPGUtil();
}

} // namespace
