// SPDX-License-Identifier: MIT
#include "ProxyKinds.h"
#include "SubscriberTest.h"

#include <zviptv/ProxyDBusHelper.h>

#include <atomic>

using namespace zviptv::test;

namespace {

/// An object that announces its end. The test delays the announcement.
class LeavingProxy : public ServiceTest, public testing::WithParamInterface<ProxyKind>
{
protected:
    /// When the service receives the announcement of the end, it calls the object's channel before it
    /// answers.
    void CallDuringDeparture()
    {
        m_service.AnswerAnnouncements([this](Announcement const& announcement) -> WireAnswer {
            if (announcement.add == "n") {
                m_answer = m_caller.Call({announcement.dbusname, ChannelPath(announcement.type),
                                          "org.corvel.zviptvapi.DbusCommunication", "Send"},
                                         WireEntries());
            }
            return WireAnswer(Pairs({{"dbusname", m_service.Name()}}));
        });
    }

    WirePeer m_caller;
    WireMessage m_answer;
    CProxyDBusHelper m_other{"FENCE"}; // keeps the connection
    LoopThread m_loop;
};

INSTANTIATE_TEST_SUITE_P(Proxies, LeavingProxy, testing::ValuesIn(AllKinds()), KindName);

TEST_P(LeavingProxy, AnswersTheServiceUntilItsDeparture)
{
    CallDuringDeparture();
    ASSERT_NE(GetParam().create(IPTV_PROFILE_DEFAULT, 0), nullptr);
    GetParam().destroy();
    EXPECT_EQ(m_answer.kind, WireKind::Reply) << m_answer.errorName;
}

std::atomic<int> delivered{0};

using LeavingSubscriber = LeavingProxy;

INSTANTIATE_TEST_SUITE_P(Proxies, LeavingSubscriber, testing::Values(KindsWithHandle().back()), KindName);

TEST_P(LeavingSubscriber, DeliversUntilItsDeparture)
{
    delivered = 0;
    IIPTVDataSubscriber* const subscriber = CreateSubscriber();
    int key = 0;
    ASSERT_TRUE(subscriber->SubscribeForPES([](ZVPESData&, void*) { ++delivered; }, nullptr, key));
    m_service.AnswerAnnouncements([this](Announcement const& announcement) -> WireAnswer {
        m_service.Notify(announcement.dbusname, announcement.type, PESOf("1", "x"));
        EXPECT_TRUE(WaitUntil([] { return delivered == 1; }, std::chrono::seconds(1)));
        return WireAnswer(Pairs({{"dbusname", m_service.Name()}}));
    });
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    EXPECT_EQ(delivered, 1);
}

/// A callback of the data subscriber that runs until the test releases it, and its action after that.
class CreateMeanwhile : public SubscriberTest
{
protected:
    CreateMeanwhile()
    {
        self = this;
        SubscribeForPES(Run);
    }

    static void Run(ZVPESData& /*pes*/, void* /*userData*/)
    {
        self->m_entered.set_value();
        self->m_leave.get_future().wait();
        if (self->m_atTheEnd) {
            self->m_atTheEnd();
        }
        self->m_hasLeft = true;
    }

    /// Another thread destroys the object while the callback runs.
    std::future<void> DestroyDuringTheCallback()
    {
        Notify(PESOf("1", "x"));
        m_entered.get_future().wait();
        auto destroyed = std::async(std::launch::async, [this] {
            CIPTVServiceAPI::DestroyIPTVDataSubscriber();
            EXPECT_TRUE(m_hasLeft) << "Destroy waits for the callback";
        });
        EXPECT_TRUE(m_service.WaitForAnnouncement("IPTVDATASUBSCRIBER", "n"));
        return destroyed;
    }

    /// "y", "n" and so on, in the order in which the service received them.
    std::string Announced() const
    {
        std::string announced;
        for (Announcement const& announcement : m_service.Announcements()) {
            announced += announcement.add;
        }
        return announced;
    }

    void ExpectAlive(IIPTVDataSubscriber* subscriber)
    {
        ASSERT_NE(subscriber, nullptr);
        EXPECT_EQ(Announced(), "yny");
        std::size_t const before = Requests().size();
        int key = 0;
        EXPECT_TRUE(subscriber->SubscribeForCaption([](ZVCaption&, void*) {}, nullptr, key));
        ASSERT_EQ(Requests().size(), before + 1);
        EXPECT_EQ(Requests().back(), Request("requestCaptionCB", "1"));
    }

    static CreateMeanwhile* self;

    CProxyDBusHelper m_other{"FENCE"}; // keeps the connection
    std::promise<void> m_entered;
    std::promise<void> m_leave;
    std::function<void()> m_atTheEnd;
    std::atomic<bool> m_hasLeft{false};
    LoopThread m_loop;
};

CreateMeanwhile* CreateMeanwhile::self = nullptr;

TEST_F(CreateMeanwhile, OnAnotherThreadMakesALiveObject)
{
    auto destroyed = DestroyDuringTheCallback();
    ExpectAlive(CreateSubscriber());
    m_leave.set_value();
    destroyed.get();
    EXPECT_EQ(Announced(), "yny") << "the new object stays";
}

TEST_F(CreateMeanwhile, InsideTheCallbackMakesALiveObject)
{
    IIPTVDataSubscriber* made = nullptr;
    m_atTheEnd = [&made] { made = CreateSubscriber(); };
    auto destroyed = DestroyDuringTheCallback();
    m_leave.set_value();
    destroyed.get();
    ExpectAlive(made);
}

TEST_F(CreateMeanwhile, FollowsTheDepartureAlsoWithASlowService)
{
    m_leave.set_value();
    std::promise<void> heard;
    std::promise<void> answer;
    auto const mayAnswer = answer.get_future().share();
    m_service.AnswerAnnouncements([&](Announcement const& announcement) {
        if (announcement.add == "n") {
            heard.set_value();
            mayAnswer.wait();
        }
        return WireAnswer(Pairs({{"dbusname", m_service.Name()}}));
    });
    auto destroyed = std::async(std::launch::async, CIPTVServiceAPI::DestroyIPTVDataSubscriber);
    heard.get_future().wait();
    m_log.Clear();
    auto created = std::async(std::launch::async, [] { return CreateSubscriber(); });
    ASSERT_TRUE(WaitUntil([this] { return m_log.Lines().size() == 1; }, patience)) << "its entry line";
    answer.set_value();
    EXPECT_EQ(destroyed.get(), 0);
    ExpectAlive(created.get());
    m_service.AnswerAnnouncements({});
}

} // namespace
