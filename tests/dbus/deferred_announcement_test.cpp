// SPDX-License-Identifier: MIT
#include "HelperFixture.h"

#include <zviptv/DeferredReply.h>
#include <zviptv/ProxyDBusHelper.h>

#include <future>
#include <optional>

using namespace zviptv::test;

namespace {

/// A server whose announcement handler defers its answers.
class DeferredAnnouncement : public LoopedChannelTest
{
protected:
    DeferredAnnouncement()
    {
        CConnectionHelperDBusServer::Instance()->SetDbusSignalCb(Handle, this);
        EXPECT_TRUE(m_partner.WaitForOwner(HelperName, true));
    }

    static std::string Handle(std::string, std::string, std::string, void* data)
    {
        auto& self = *static_cast<DeferredAnnouncement*>(data);
        self.m_sender = CProxyDBusHelper::GetSenderName();
        self.m_taken.set_value(CDeferredReply::Take());
        self.m_second = CDeferredReply::Take().IsPending();
        return "not sent";
    }

    /// Announces on a separate thread.
    void Announce(std::chrono::milliseconds timeout = patience)
    {
        m_answer = std::async(std::launch::async, [this, timeout] {
            return m_partner.Call(HelperTarget(), Pairs({{"dbusname", ":1.7"}}), CallOptions{timeout, false});
        });
        m_deferred.emplace(m_taken.get_future().get());
    }

    std::promise<CDeferredReply> m_taken;
    std::optional<CDeferredReply> m_deferred;
    std::future<WireMessage> m_answer;
    std::string m_sender = "none yet";
    bool m_second = true;
    ServerEnd m_end;
};

TEST_F(DeferredAnnouncement, IsAnsweredLaterInTheFormOfTheHelperBus)
{
    Announce();
    EXPECT_TRUE(m_deferred->IsPending());
    m_deferred->Send(Message({{"dbusname", ":1.42"}}));
    WireMessage const answer = m_answer.get();
    EXPECT_EQ(answer.kind, WireKind::Reply);
    EXPECT_EQ(answer.signature, "a(ss)");
    EXPECT_EQ(answer.pairs, Pairs({{"dbusname", ":1.42"}}));
    m_loop.Run([] {}); // the handler has returned
    EXPECT_FALSE(m_second) << "an answer is taken once";
    EXPECT_EQ(m_sender, "") << "an announcement names its sender itself";
}

TEST_F(DeferredAnnouncement, MayBeAnError)
{
    Announce();
    m_deferred->SendError("org.example.Error.Busy", "try later");
    EXPECT_EQ(m_answer.get().errorName, "org.example.Error.Busy");
}

TEST_F(DeferredAnnouncement, ThatIsNotUtf8IsAnError)
{
    Announce();
    m_deferred->Send(Message({{"dbusname", "\xff"}}));
    EXPECT_EQ(m_answer.get().errorName, "org.freedesktop.DBus.Error.Failed");
}

TEST_F(DeferredAnnouncement, MayStayUnanswered)
{
    Announce(std::chrono::milliseconds(200));
    m_deferred->LeaveUnanswered();
    EXPECT_EQ(m_answer.get().errorName, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(m_partner.GetNameOwner(HelperName).empty(), false);
}

TEST_F(DeferredAnnouncement, ThatIsDroppedIsAnError)
{
    Announce();
    m_deferred.reset();
    WireMessage const answer = m_answer.get();
    EXPECT_EQ(answer.errorName, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(answer.strings, std::vector<std::string>{"The service gives no answer"});
}

} // namespace
