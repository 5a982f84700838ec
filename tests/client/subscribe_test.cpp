// SPDX-License-Identifier: MIT
#include "ClientTest.h"

#include <stdexcept>

using namespace zviptv;
using namespace zviptv::test;
using testing::ElementsAre;

namespace {

/// A PES packet of private data with the PTS 90000 and the payload "abc".
std::string const PacketBytes("\0\0\1\xbd\0\x0b\x80\x80\x05\x21\0\x05\xbf\x21"
                              "abc",
                              17);

class SubscribeTest : public TelevisionTest
{
protected:
    void PushPacket(std::string const& pid, std::string const& size = "17")
    {
        m_service->Notify(m_service->ClientOf("IPTVDATASUBSCRIBER"), "IPTVDATASUBSCRIBER",
                          Entries({{"functionname", "PESCB"},
                                   {"pesDataSize", size},
                                   {"pesType", "2"},
                                   {"pesPID", pid},
                                   {"pesPTS", "90000"},
                                   {"pesData", PacketBytes}}));
    }
    bool AwaitRequest(std::string const& function, std::string const& on)
    {
        return RunUntil([&] {
            auto const requests = m_service->Requests();
            return !requests.empty() && requests.back().Value("functionname") == function &&
                   requests.back().Value("on") == on;
        });
    }
};

TEST_F(SubscribeTest, PacketsReachMatchingSubscriptions)
{
    std::vector<PesPacket> kept;
    int all = 0;
    Subscription some =
        m_television->SubscribePes({{0x101}, {}}, [&](PesPacket const& packet) { kept.push_back(packet); });
    Subscription const every = m_television->SubscribePes({}, [&](PesPacket const&) { ++all; });
    ASSERT_TRUE(AwaitRequest("requestPESCB", "1"));
    PushPacket("257");
    PushPacket("258");
    ASSERT_TRUE(RunUntil([&] { return all == 2; }));
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(kept[0].Pid(), 0x101);
    EXPECT_EQ(kept[0].Pts(), 90000U);
    EXPECT_THAT(kept[0].Payload().Copy(), ElementsAre('a', 'b', 'c'));
    EXPECT_EQ(every.Counters().packets, 2U);
    EXPECT_EQ(every.Counters().bytes, 34U);
    some.End();
    EXPECT_EQ(m_service->Requests().size(), 1U) << "one subscription of the contract for both";
}

TEST_F(SubscribeTest, ReportsTheEndOfTheLastSubscription)
{
    Subscription captions = m_television->SubscribeCaptions([](CaptionData const&) {});
    ASSERT_TRUE(AwaitRequest("requestCaptionCB", "1"));
    captions.End();
    ASSERT_TRUE(AwaitRequest("requestCaptionCB", "0"));
}

TEST_F(SubscribeTest, PacketsArriveAgainAfterARestart)
{
    int packets = 0;
    Subscription const subscription = m_television->SubscribePes({}, [&](PesPacket const&) { ++packets; });
    ASSERT_TRUE(AwaitRequest("requestPESCB", "1"));
    ASSERT_TRUE(AwaitAvailable(true));
    KillService();
    ASSERT_TRUE(AwaitAvailable(false));
    StartService();
    ASSERT_TRUE(AwaitRequest("requestPESCB", "1"));
    PushPacket("257");
    ASSERT_TRUE(RunUntil([&] { return packets == 1; }));
}

TEST_F(SubscribeTest, APacketThatCannotBeReadIsReported)
{
    std::vector<Failure> reported;
    m_television->OnError([&](Failure const& failure) { reported.push_back(failure); });
    Subscription const subscription = m_television->SubscribePes(
        {}, [](PesPacket const&) { throw std::runtime_error("out of a callback"); });
    ASSERT_TRUE(AwaitRequest("requestPESCB", "1"));
    PushPacket("257", "many");
    PushPacket("257");
    ASSERT_TRUE(RunUntil([&] { return reported.size() == 2; }));
    EXPECT_EQ(reported[0].kind, FailureKind::MalformedReply);
    EXPECT_EQ(reported[0].key, "pesDataSize");
    EXPECT_EQ(reported[1].kind, FailureKind::CallbackThrew);
    EXPECT_EQ(reported[1].function, "PESCB");
}

TEST_F(SubscribeTest, ACallbackMayDestroyTheTelevision)
{
    int packets = 0;
    Subscription const subscription = m_television->SubscribePes({}, [&](PesPacket const&) {
        ++packets;
        m_television.reset();
    });
    ASSERT_TRUE(AwaitRequest("requestPESCB", "1"));
    PushPacket("257");
    PushPacket("257");
    ASSERT_TRUE(RunUntil([&] { return m_television == nullptr; }));
    RunPending();
    EXPECT_EQ(packets, 1);
    EXPECT_FALSE(subscription.IsActive());
}

} // namespace
