// SPDX-License-Identifier: MIT
#include "MethodTable.h"
#include "SubscriberTest.h"

using namespace zviptv::test;

namespace {

struct Malformed
{
    char const* key;
    /// Null for a missing entry.
    char const* value;
    char const* failure;
};

class DispatchFaults : public SubscriberTest
{
protected:
    static WireEntries Changed(WireEntries notification, Malformed const& change)
    {
        for (auto entry = notification.begin(); entry != notification.end(); ++entry) {
            if (entry->key == change.key) {
                if (change.value == nullptr) {
                    notification.erase(entry);
                } else {
                    entry->bytes = change.value;
                }
                break;
            }
        }
        return notification;
    }

    /// The exception that leaves the context while it dispatches `notification`.
    std::string FailureOfDispatch(WireEntries const& notification)
    {
        Notify(notification);
        return FailureOf(
            [] { RunUntil([] { return !pesDeliveries.empty() || !captionDeliveries.empty(); }); });
    }
};

TEST_F(DispatchFaults, MalformedPESThrowsOutOfTheDispatch)
{
    SubscribeForPES(Collect<ZVPESData>);
    for (Malformed const& row : {Malformed{"pesDataSize", nullptr, "invalid_argument: stoi"},
                                 {"pesDataSize", "abc", "invalid_argument: stoi"},
                                 {"pesDataSize", "2147483648", "out_of_range: stoi"},
                                 {"pesType", nullptr, "invalid_argument: stoi"},
                                 {"pesType", "-2147483649", "out_of_range: stoi"},
                                 {"pesPID", nullptr, "invalid_argument: stoi"},
                                 {"pesPID", "x", "invalid_argument: stoi"},
                                 {"pesPTS", nullptr, "invalid_argument: stoll"},
                                 {"pesPTS", "now", "invalid_argument: stoll"},
                                 {"pesPTS", "9223372036854775808", "out_of_range: stoll"},
                                 {"pesDataSize", "-1", "length_error: vector::_M_default_append"},
                                 {"pesDataSize", "-2147483648", "length_error: vector::_M_default_append"},
                                 {"pesDataSize", "2147483647", "length_error: vector::_M_default_append"}}) {
        SCOPED_TRACE(std::string(row.key) + " " + (row.value == nullptr ? "missing" : row.value));
        EXPECT_EQ(FailureOfDispatch(Changed(PESOf("3", "abc"), row)), row.failure);
        EXPECT_TRUE(pesDeliveries.empty());
        Notify(PESOf("3", "abc"));
        ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
        EXPECT_EQ(pesDeliveries.size(), 1U);
        pesDeliveries.clear();
    }
}

TEST_F(DispatchFaults, MalformedCaptionThrowsOutOfTheDispatch)
{
    SubscribeForCaption(Collect<ZVCaption>);
    for (Malformed const& row :
         {Malformed{"captionDataSize", nullptr, "invalid_argument: stoi"},
          {"captionDataSize", "", "invalid_argument: stoi"},
          {"captionDataSize", "99999999999", "out_of_range: stoi"},
          {"captionType", nullptr, "invalid_argument: stoi"},
          {"captionType", "2147483648", "out_of_range: stoi"},
          {"captionDataSize", "-5", "length_error: vector::_M_default_append"},
          {"captionDataSize", "100000000", "length_error: vector::_M_default_append"}}) {
        SCOPED_TRACE(std::string(row.key) + " " + (row.value == nullptr ? "missing" : row.value));
        EXPECT_EQ(FailureOfDispatch(Changed(CaptionOf("3", "abc"), row)), row.failure);
        EXPECT_TRUE(captionDeliveries.empty());
        Notify(CaptionOf("3", "abc"));
        ASSERT_TRUE(RunUntil([] { return !captionDeliveries.empty(); }));
        captionDeliveries.clear();
    }
}

/// The numbers are read in the order size, type, PID, PTS, and before the data is taken.
TEST_F(DispatchFaults, FirstMalformedNumberCounts)
{
    SubscribeForPES(Collect<ZVPESData>);
    EXPECT_EQ(FailureOfDispatch(PESOf("-1", "abc", "1", "bad")), "invalid_argument: stoll");
    EXPECT_EQ(FailureOfDispatch(PESOf("99999999999", "abc", "bad", "bad")), "out_of_range: stoi");
    EXPECT_EQ(FailureOfDispatch(PESOf("1", "abc", "99999999999", "1", "bad")), "invalid_argument: stoi");
    EXPECT_EQ(FailureOfDispatch(PESOf("1", "abc", "bad", "99999999999999999999")), "invalid_argument: stoi");
}

TEST_F(DispatchFaults, ProxyWorksAfterManyFailures)
{
    SubscribeForPES(Collect<ZVPESData>);
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(FailureOfDispatch(PESOf("", "abc")), "invalid_argument: stoi");
    }
    EXPECT_EQ(CallClient("IPTVDATASUBSCRIBER").kind, WireKind::Reply);
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    m_subscriber = CreateSubscriber();
    SubscribeForPES(Collect<ZVPESData>);
    Notify(PESOf("3", "abc"));
    EXPECT_TRUE(RunUntil([] { return pesDeliveries.size() == 1; }));
}

TEST_F(DispatchFaults, FailureOfACallbackLeavesTheDispatch)
{
    SubscribeForPES([](ZVPESData&, void*) { throw std::out_of_range("callback"); });
    EXPECT_EQ(FailureOfDispatch(PESOf("1", "x")), "out_of_range: callback");
    EXPECT_EQ(FailureOfDispatch(PESOf("1", "x")), "out_of_range: callback");
}

TEST_F(DispatchFaults, BodiesOfOtherTypesAreDropped)
{
    SubscribeForPES(Collect<ZVPESData>);
    std::string const client = m_service.ClientOf("IPTVDATASUBSCRIBER");
    m_service.NotifyRaw(client, "IPTVDATASUBSCRIBER", WireBody::Strings({"PESCB"}));
    m_service.NotifyRaw(client, "IPTVDATASUBSCRIBER", WireBody());
    Notify(PESOf("1", "x"));
    ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
    EXPECT_EQ(pesDeliveries.size(), 1U);
}

TEST_F(DispatchFaults, ForgedNotificationsDoNotArrive)
{
    SubscribeForPES(Collect<ZVPESData>);
    WirePeer forger;
    forger.Emit({m_service.ClientOf("IPTVDATASUBSCRIBER"), ChannelPath("IPTVDATASUBSCRIBER"),
                 "org.corvel.zviptvapi.DbusCommunication", "SendSignal"},
                PESOf("1", "x"));
    forger.Sync();
    Notify(PESOf("2", "ok"));
    ASSERT_TRUE(RunUntil([] { return !pesDeliveries.empty(); }));
    Dispatch();
    ASSERT_EQ(pesDeliveries.size(), 1U);
    EXPECT_EQ(TextOf(pesDeliveries.front().record.data), "ok");
}

} // namespace
