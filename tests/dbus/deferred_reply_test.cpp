// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

#include <zviptv/DeferredReply.h>

#include <optional>
#include <thread>

using namespace zviptv::test;

namespace {

/// A channel whose handler defers its answers.
class DeferredReply : public LoopedChannelTest
{
protected:
    DeferredReply()
    {
        m_channel.onMessage = [this](CMessageBuffer&) {
            m_deferred.emplace(CDeferredReply::Take());
            m_second = CDeferredReply::Take().IsPending();
            return Message({{"not", "sent"}});
        };
    }

    /// Calls on a separate thread, and waits until the answer is deferred.
    std::thread Call(WireMessage& reply)
    {
        std::thread caller(
            [this, &reply] { reply = m_partner.Call(m_channel.Target("Send"), WireEntries()); });
        EXPECT_TRUE(WaitUntil([this] { return IsDeferred(); }, patience));
        return caller;
    }

    bool IsDeferred()
    {
        bool deferred = false;
        m_loop.Run([&] { deferred = m_deferred.has_value(); });
        return deferred;
    }

    TestChannel m_channel{"BROADCASTDATA"};
    std::optional<CDeferredReply> m_deferred;
    bool m_second = true;
};

TEST(DeferredReplyOutside, HasNothingPending)
{
    CDeferredReply reply = CDeferredReply::Take();
    EXPECT_FALSE(reply.IsPending());
    reply.Send(CMessageBuffer());
    reply.SendError("org.example.Error", "text");
}

TEST_F(DeferredReply, IsSentFromAnyThread)
{
    WireMessage reply;
    std::thread caller = Call(reply);
    EXPECT_TRUE(m_deferred->IsPending());
    EXPECT_FALSE(m_second) << "an answer is taken once";
    m_deferred->Send(Message({{"k", "v"}}));
    caller.join();
    EXPECT_EQ(reply.kind, WireKind::Reply);
    EXPECT_EQ(reply.entries, Entries({{"k", "v"}}));
    EXPECT_FALSE(m_deferred->IsPending());
    m_deferred->Send(Message({{"k", "again"}}));
}

TEST_F(DeferredReply, MayBeAnError)
{
    WireMessage reply;
    std::thread caller = Call(reply);
    m_deferred->SendError("org.example.Error.Busy", "try later");
    caller.join();
    EXPECT_EQ(reply.kind, WireKind::Error);
    EXPECT_EQ(reply.errorName, "org.example.Error.Busy");
    EXPECT_EQ(reply.strings, std::vector<std::string>{"try later"});
}

TEST_F(DeferredReply, ReplacesAnErrorThatTheBusWouldRefuse)
{
    WireMessage reply;
    std::thread caller = Call(reply);
    m_deferred->SendError("no name", "\xFF");
    caller.join();
    EXPECT_EQ(reply.errorName, "org.freedesktop.DBus.Error.Failed");
    EXPECT_EQ(reply.strings, std::vector<std::string>{"The service reports an error"});
}

TEST_F(DeferredReply, ReplacesAnEmptyReply)
{
    WireMessage reply;
    std::thread caller = Call(reply);
    CDeferredReply later = CDeferredReply::Take();
    later = std::move(*m_deferred);
    EXPECT_FALSE(m_deferred->IsPending());
    later.Send(Message({{"k", "moved"}}));
    caller.join();
    EXPECT_EQ(reply.entries, Entries({{"k", "moved"}}));
}

TEST_F(DeferredReply, OutlivesTheChannel)
{
    TestChannel const other("IPGUTIL"); // keeps the connection
    WireMessage reply;
    std::thread caller = Call(reply);
    m_loop.Run([this] { m_channel.Destroy(); });
    m_deferred->Send(Message({{"k", "late"}}));
    caller.join();
    EXPECT_EQ(reply.entries, Entries({{"k", "late"}}));
}

TEST_F(DeferredReply, ReplacesATextThatIsLargerThanTheBusCarries)
{
    WireMessage reply;
    std::thread caller = Call(reply);
    std::string const text(static_cast<std::size_t>(CProxyDBusHelper::MAX_BODY_SIZE) - 4, 'x');
    m_deferred->SendError("org.example.Error", text.c_str());
    caller.join();
    EXPECT_EQ(reply.errorName, "org.example.Error");
    EXPECT_EQ(reply.strings, std::vector<std::string>{"The service reports an error"});
}

/// More calls than the bus lets one connection leave unanswered.
constexpr int ManyCalls = 150;

TEST_F(DeferredReply, ThatIsDroppedIsAnError)
{
    m_channel.onMessage = [](CMessageBuffer& request) {
        if (request.Size() == 0) {
            CDeferredReply::Take();
        }
        return CMessageBuffer();
    };
    for (int i = 0; i < ManyCalls; ++i) {
        WireMessage const reply = m_partner.Call(m_channel.Target("Send"), WireEntries());
        ASSERT_EQ(reply.errorName, "org.freedesktop.DBus.Error.NoReply");
        ASSERT_EQ(reply.strings, std::vector<std::string>{"The service gives no answer"});
        ASSERT_EQ(reply.sender, m_channel->GetPublicName()) << "not the time-out";
    }
    EXPECT_EQ(m_partner.Call(m_channel.Target("Send"), Entries({{"k", "v"}})).kind, WireKind::Reply);
}

TEST_F(DeferredReply, ThatIsReplacedIsAnError)
{
    WireMessage reply;
    std::thread caller = Call(reply);
    *m_deferred = CDeferredReply::Take();
    caller.join();
    EXPECT_EQ(reply.strings, std::vector<std::string>{"The service gives no answer"});
}

TEST_F(DeferredReply, MayBeLeftUnanswered)
{
    m_channel.onMessage = [](CMessageBuffer&) {
        CDeferredReply reply = CDeferredReply::Take();
        reply.LeaveUnanswered();
        EXPECT_FALSE(reply.IsPending());
        return CMessageBuffer();
    };
    WireMessage const reply = m_partner.Call(m_channel.Target("Send"), WireEntries(),
                                             CallOptions{std::chrono::milliseconds(200), false});
    EXPECT_EQ(reply.errorName, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(reply.sender, "") << "made by the caller at its time-out";
}

} // namespace
