// SPDX-License-Identifier: MIT
#include "EndpointTest.h"

#include "WaitUntil.h"

#include <zviptv/ProxyDBusHelper.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace zviptv::test;

namespace {

using Loss = std::pair<std::string, std::string>;

void RecordLoss(std::string partner, std::string own, void* losses)
{
    static_cast<std::vector<Loss>*>(losses)->emplace_back(partner, own);
}

TEST_F(EndpointTest, ReportsTheLossOfThePartner)
{
    Plain endpoint;
    std::vector<Loss> losses;
    endpoint.SetDisconnectNotiCB(RecordLoss, &losses);
    EXPECT_EQ(LinesOf("SetDisconnectNotiCB"), EntryLine());
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return !losses.empty(); }));
    EXPECT_EQ(losses, (std::vector<Loss>{{m_partner.Name(), "ENDPOINT"}}));
    CMessageBuffer message;
    EXPECT_FALSE(endpoint.t_SendNotication(message));
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Connection not set."));
}

TEST_F(EndpointTest, DestructionReportsNoLoss)
{
    std::vector<Loss> losses;
    {
        Plain endpoint;
        endpoint.SetDisconnectNotiCB(RecordLoss, &losses);
        ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    }
    Fence fence;
    EXPECT_EQ(Call(fence.Target(), {}).kind, WireKind::Reply);
    EXPECT_TRUE(losses.empty());
}

/// Destroys itself in the first hook that is called.
class SelfEnding : public CCommonNative
{
public:
    explicit SelfEnding(std::unique_ptr<SelfEnding>& self) : CCommonNative("ENDPOINT"), m_self(self) {}

    CMessageBuffer t_HandleMessage(CMessageBuffer& msg) override
    {
        CMessageBuffer reply;
        reply.AddValue("echo", msg.GetValue("functionname").c_str());
        m_self.reset();
        return reply;
    }

    void t_HandleNotification(CMessageBuffer& /*msg*/) override { m_self.reset(); }

private:
    std::unique_ptr<SelfEnding>& m_self;
};

TEST_F(EndpointTest, MayEndItselfWhileItAnswersACall)
{
    Fence const keepsTheConnection; // the last user of the connection would drop an answer that is being sent
    std::unique_ptr<SelfEnding> endpoint;
    endpoint = std::make_unique<SelfEnding>(endpoint);
    WireMessage const reply = Call(Target(*endpoint, "Send"), Entries({{"functionname", "Last"}}));
    EXPECT_EQ(endpoint, nullptr);
    EXPECT_EQ(reply.entries, Entries({{"echo", "Last"}}));
}

TEST_F(EndpointTest, MayEndItselfInANotification)
{
    std::unique_ptr<SelfEnding> endpoint;
    endpoint = std::make_unique<SelfEnding>(endpoint);
    ASSERT_TRUE(endpoint->Connect(m_partner.Name()));
    Fence fence;
    Notify(*endpoint, Entries({{"functionname", "Last"}}));
    Notify(*endpoint, Entries({{"functionname", "Too late"}}));
    EXPECT_EQ(Call(fence.Target(), {}).kind, WireKind::Reply);
    EXPECT_EQ(endpoint, nullptr);
    EXPECT_EQ(m_log.Count("Default handler"), 1U);
}

TEST_F(EndpointTest, MayEndItselfInTheLossHandler)
{
    auto endpoint = std::make_unique<Plain>();
    ASSERT_TRUE(endpoint->Connect(m_partner.Name()));
    endpoint->SetDisconnectNotiCB(
        [](std::string, std::string, void* self) { static_cast<std::unique_ptr<Plain>*>(self)->reset(); },
        &endpoint);
    m_partner.Disconnect();
    EXPECT_TRUE(RunUntil([&] { return endpoint == nullptr; }));
}

TEST_F(EndpointTest, MayEndWithACallOutstanding)
{
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    {
        Plain endpoint;
        ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
        CMessageBuffer request;
        CMessageBuffer reply;
        ASSERT_TRUE(endpoint.t_SendMessage(request, reply));
        ASSERT_TRUE(m_partner.WaitFor(IsCall("Send")));
    }
    m_partner.Disconnect(); // completes the call with an error
    EXPECT_TRUE(RunUntil([&] { return m_log.Has(ZV_LOG_DEBUG, "Enter"); }));
}

/// Runs `work` in every notification. May be destroyed on any thread.
class Stoppable : public CCommonNative
{
public:
    explicit Stoppable(std::function<void()> work) : CCommonNative("ENDPOINT"), m_work(std::move(work)) {}
    ~Stoppable() override { t_StopCallbacks(); }

    void Stop() { t_StopCallbacks(); }

    void t_HandleNotification(CMessageBuffer& /*msg*/) override { m_work(); }

private:
    std::function<void()> m_work;
};

TEST_F(EndpointTest, StopCallbacksEndsTheHooksOfTheSameThread)
{
    int count = 0;
    Stoppable endpoint([&] { ++count; });
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    Notify(endpoint, Entries({{"functionname", "Tell"}}));
    ASSERT_TRUE(RunUntil([&] { return count == 1; }));
    endpoint.Stop();
    Fence fence;
    Notify(endpoint, Entries({{"functionname", "Tell"}}));
    EXPECT_EQ(Call(fence.Target(), {}).kind, WireKind::Reply);
    EXPECT_EQ(count, 1);
}

TEST_F(EndpointTest, StopCallbacksMayBeCalledInsideAHook)
{
    Stoppable* self = nullptr;
    int count = 0;
    Stoppable endpoint([&] {
        self->Stop();
        ++count;
    });
    self = &endpoint;
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    Notify(endpoint, Entries({{"functionname", "Tell"}}));
    EXPECT_TRUE(RunUntil([&] { return count == 1; }));
}

TEST_F(EndpointTest, StopCallbacksIsHarmlessWithoutAChannel)
{
    struct Closed : CCommonNative
    {
        Closed() : CCommonNative("CLOSED") {}
        void Close()
        {
            m_pDBusHelper.reset();
            t_StopCallbacks();
        }
    };
    Closed endpoint;
    endpoint.Close();
}

/// Whether the thread is waiting.
bool IsAsleep(long thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string const stat((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::size_t const nameEnd = stat.rfind(')');
    return nameEnd != std::string::npos && stat.compare(nameEnd, 3, ") S") == 0;
}

TEST_F(EndpointTest, StopCallbacksWaitsForARunningHook)
{
    std::promise<void> entered;
    std::promise<void> release;
    std::atomic<bool> stopped{false};
    std::atomic<bool> stoppedTooEarly{false};
    Stoppable endpoint([&] {
        entered.set_value();
        release.get_future().wait();
        stoppedTooEarly = stopped.load();
    });
    LoopThread const loop;
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    Notify(endpoint, Entries({{"functionname", "Tell"}}));
    entered.get_future().wait();
    std::atomic<long> thread{0};
    std::thread stopper([&] {
        thread = syscall(SYS_gettid);
        endpoint.Stop();
        stopped = true;
    });
    WaitUntil([&] { return stopped || (thread != 0 && IsAsleep(thread)); }, patience);
    EXPECT_FALSE(stopped);
    release.set_value();
    stopper.join();
    EXPECT_FALSE(stoppedTooEarly);
}

TEST_F(EndpointTest, EndsOnAnotherThreadDuringAFlood)
{
    constexpr int rounds = 30;
    LoopThread const loop;
    Fence fence;
    m_partner.SetRecording(false);
    for (int round = 0; round < rounds; ++round) {
        std::atomic<int> count{0};
        auto endpoint = std::make_unique<Stoppable>([&] { ++count; });
        ASSERT_TRUE(endpoint->Connect(m_partner.Name()));
        m_partner.EmitMany(Target(*endpoint, "SendSignal"), Entries({{"functionname", "Tell"}}), 500);
        ASSERT_TRUE(WaitUntil([&] { return count > 3; }, patience));
        endpoint.reset();
        int const atTheEnd = count;
        EXPECT_EQ(m_partner.Call(fence.Target(), WireEntries()).kind, WireKind::Reply);
        EXPECT_EQ(count, atTheEnd);
    }
}

} // namespace
