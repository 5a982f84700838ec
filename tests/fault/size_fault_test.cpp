// SPDX-License-Identifier: MIT
#include "FaultTest.h"

#include <malloc.h>

using namespace zviptv::test;

namespace {

constexpr int Largest = 31; // MiB; the largest of the tested sizes that the bus accepts

/// Messages of 31, 32, 64 and 129 MiB. The bus closes the connection of a sender of more than 32 MiB. The
/// library must never be that sender.
class SizeFault : public PartnerTest, public testing::WithParamInterface<int>
{
protected:
    SizeFault()
    {
        mallopt(M_MMAP_THRESHOLD, 1024 * 1024);
    } // freed is given back, however often it was needed

    static std::string Value()
    {
        return std::string(static_cast<std::size_t>(GetParam()) * 1024 * 1024, 'x');
    }
    static bool IsCarried() { return GetParam() <= Largest; }

    void ExpectConnected(TestChannel& channel)
    {
        ASSERT_TRUE(channel->IsConnectionReady());
        ASSERT_EQ(Ask(channel, {{"id", "still here"}}).GetValue("id"), "still here");
        ASSERT_EQ(channel->GetPublicName(), m_ownName);
        ASSERT_EQ(m_observer.GetNameOwner(m_ownName), m_ownName);
    }

    std::string const m_ownName = m_other.GetPublicName();
};

INSTANTIATE_TEST_SUITE_P(MiB, SizeFault, testing::Values(31, 32, 64, 129), testing::PrintToStringParamName());

TEST_P(SizeFault, F09_RequestsAndNotifications)
{
    PeerProcess partner;
    TestChannel channel;
    ASSERT_EQ(channel->Connect(partner.Name()), 1);
    CMessageBuffer message;
    message.AddValue("v", GetParam() * 1024 * 1024, Value().data());
    CMessageBuffer reply;
    Repeat(ShortOrLong(1, 10), [&] {
        ASSERT_EQ(Order(channel, {{"do", "record"}}), 1);
        // Sending a request may take longer than the send waits for its answer.
        int const sent = channel->SendMessage(message, reply, 0);
        ASSERT_TRUE(IsCarried() || sent == 0);
        ASSERT_EQ(channel->SendMessage(message, reply, 1), IsCarried() ? 1 : 0);
        ASSERT_EQ(channel->SendNotification(message), IsCarried() ? 1 : 0);
        ASSERT_TRUE(RunUntil([&] { return Order(channel, {{"id", "1"}}) == 1; })); // it has handled them
        CMessageBuffer const report =
            Ask(channel, {{"do", "report"}, {"mebibytes", std::to_string(GetParam())}});
        ASSERT_EQ(report.GetValue("count"), IsCarried() ? "3" : "0") << "both requests and the notification";
        RunPending();
    });
    ExpectConnected(channel);
}

TEST_P(SizeFault, F09_AnswersToThePartner)
{
    LoopThread loop;
    WirePeer caller; // in this process, to check the answer
    TestChannel channel;
    std::string const value = Value();
    channel.onMessage = [&](CMessageBuffer&) { return Message({{"v", value}}); };
    Repeat(ShortOrLong(1, 10), [&] {
        WireMessage const answer = caller.Call(channel.Target("Send"), WireEntries());
        ASSERT_EQ(answer.kind, IsCarried() ? WireKind::Reply : WireKind::Error);
        ASSERT_EQ(answer.Value("v").size(), IsCarried() ? value.size() : 0U);
    });
    channel->Connect(caller.Name());
    EXPECT_TRUE(channel->IsConnectionReady());
    EXPECT_EQ(m_observer.GetNameOwner(m_ownName), m_ownName);
}

/// A message of the partner arrives, or the bus disconnects the partner and the channel reports its loss.
class IncomingSizeFault : public SizeFault
{
protected:
    /// Sends one message from a new partner.
    void Receive(std::function<void(TestChannel&)> const& order)
    {
        PeerProcess partner;
        TestChannel channel;
        std::size_t received = 0;
        int losses = 0;
        auto const count = [&](CMessageBuffer& message) {
            for (int i = 0; i < message.Size(); ++i) {
                received += static_cast<std::size_t>(message.GetValueOfSize(i));
            }
            return CMessageBuffer();
        };
        channel.onMessage = count;
        channel.onNotification = count;
        channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        order(channel);
        ASSERT_TRUE(RunUntil([&] { return losses > 0 || received > 0; }));
        ASSERT_EQ(received, IsCarried() ? Value().size() : 0U);
        ASSERT_EQ(losses, IsCarried() ? 0 : 1);
        ASSERT_EQ(m_observer.GetNameOwner(m_ownName), m_ownName);
    }

    static std::string Size() { return std::to_string(GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(MiB, IncomingSizeFault, testing::Values(31, 32, 64, 129),
                         testing::PrintToStringParamName());

TEST_P(IncomingSizeFault, F09_SignalsOfThePartner)
{
    Repeat(ShortOrLong(1, 10), [&] {
        Receive([](TestChannel& channel) {
            WireTarget const target = channel.Target("SendSignal");
            Order(channel,
                  {{"do", "emit"},
                   {"to", target.destination},
                   {"path", target.path},
                   {"member", "SendSignal"},
                   {"count", "1"},
                   {"mebibytes", Size()}},
                  1);
        });
    });
}

TEST_P(IncomingSizeFault, F09_CallsOfThePartner)
{
    Repeat(ShortOrLong(1, 10), [&] {
        Receive([](TestChannel& channel) {
            WireTarget const target = channel.Target("Send");
            Order(channel,
                  {{"do", "call"},
                   {"to", target.destination},
                   {"path", target.path},
                   {"member", "Send"},
                   {"mebibytes", Size()}},
                  1);
        });
    });
}

TEST_P(IncomingSizeFault, F09_AnswersOfThePartner)
{
    Repeat(ShortOrLong(1, 10), [&] {
        PeerProcess partner;
        TestChannel channel;
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        CMessageBuffer request = Message({{"do", "answer"}, {"mebibytes", Size()}});
        CMessageBuffer reply;
        int sent = 0;
        for (int i = 0; i < (IsCarried() ? 10 : 1) && sent == 0;
             ++i) { // a busy machine needs more than two seconds
            sent = channel->SendMessage(request, reply, 0);
        }
        ASSERT_EQ(sent, IsCarried() ? 1 : 0);
        ASSERT_EQ(reply.GetValue("v").size(), IsCarried() ? Value().size() : 0U);
        ASSERT_TRUE(RunUntil([&] { return channel->IsConnectionReady() == IsCarried(); }));
        ASSERT_EQ(m_observer.GetNameOwner(m_ownName), m_ownName);
    });
}

} // namespace
