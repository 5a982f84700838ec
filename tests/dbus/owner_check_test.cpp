// SPDX-License-Identifier: MIT
#include "HelperFixture.h"

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

/// Tests how CheckConnection() queries the bus.
class OwnerCheck : public ChannelTest
{
};

TEST_F(OwnerCheck, LeavesNoConnectionBehind)
{
    std::vector<std::string> const before = m_partner.ListNames();
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
    }
    EXPECT_TRUE(WaitUntil([&] { return m_partner.ListNames() == before; }, patience));
}

/// Repeatedly sends a signal to the thread that made it. The handler interrupts every wait.
class Interruptions
{
public:
    explicit Interruptions(std::chrono::milliseconds pause)
        : m_victim(pthread_self()), m_thread([this, pause] {
              while (!m_stop) {
                  pthread_kill(m_victim, SIGUSR1);
                  std::this_thread::sleep_for(pause);
              }
          })
    {
    }
    ~Interruptions()
    {
        m_stop = true;
        m_thread.join();
    }

    /// Must be set before.
    static void Catch()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGUSR1, &action, nullptr);
    }

private:
    pthread_t m_victim;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

TEST_F(OwnerCheck, EndsAfterTwoSecondsOnAStoppedBusDespiteInterruptions)
{
    Interruptions::Catch();
    for (auto const pause : {1ms, 700ms, 1500ms}) {
        EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
        m_bus.Stop();
        auto const start = std::chrono::steady_clock::now();
        {
            std::thread resume; // ends the test if the check does not end
            Interruptions const signals(pause);
            std::atomic<bool> done{false};
            resume = std::thread([&] {
                WaitUntil([&] { return done.load(); }, 6s);
                m_bus.Continue();
            });
            EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
            done = true;
            resume.join();
        }
        auto const waited = std::chrono::steady_clock::now() - start;
        EXPECT_GE(waited, 1990ms);
        EXPECT_LT(waited, 3500ms) << "with a signal every " << pause.count() << " ms";
    }
}

} // namespace
