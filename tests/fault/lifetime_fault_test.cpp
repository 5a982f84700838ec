// SPDX-License-Identifier: MIT
#include "FactoryObjects.h"
#include "FaultTest.h"
#include "Sanitizers.h"

#include <atomic>
#include <random>
#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

constexpr unsigned Users = 8;
constexpr unsigned Kinds = 4;

/// Writes some log lines slowly: every seventh entry line of a function takes a millisecond, so that other
/// threads get between the beginning of a call and its send.
class SlowLog
{
public:
    SlowLog() { ZVSetLogSink(Write, nullptr); }
    ~SlowLog() { ZVSetLogSink(nullptr, nullptr); }
    SlowLog(SlowLog const&) = delete;
    SlowLog& operator=(SlowLog const&) = delete;

private:
    static void Write(EZVLogPriority /*priority*/, char const* /*tag*/, char const* line, void* /*userData*/)
    {
        static std::atomic<unsigned> entries{0};
        std::string const text(line);
        bool const isEntry = text.size() > 2 && text.compare(text.size() - 2, 2, "> ") == 0;
        if (isEntry && entries++ % 7 == 0) {
            std::this_thread::sleep_for(1ms);
        }
    }
};

/// The objects of a careless application, which keeps every pointer after the end of its object.
class RandomUser
{
public:
    explicit RandomUser(unsigned seed) : m_random(seed) {}

    unsigned Draw() { return static_cast<unsigned>(m_random() >> 8U); }

    void CreateOne()
    {
        IPlayerControl* player = nullptr;
        IBroadcastData* broadcast = nullptr;
        IIPTVDataSubscriber* subscriber = nullptr;
        switch (Draw() % Kinds) {
        case 0:
            CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
            break;
        case 1:
            CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &broadcast);
            break;
        case 2:
            CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, &subscriber);
            break;
        default:
            CIPTVServiceAPI::CreateIPGUtil(&m_guide);
        }
        m_player = player != nullptr ? player : m_player;
        m_broadcast = broadcast != nullptr ? broadcast : m_broadcast;
        m_subscriber = subscriber != nullptr ? subscriber : m_subscriber;
    }

    void DestroyOne()
    {
        switch (Draw() % Kinds) {
        case 0:
            CIPTVServiceAPI::DestroyPlayerControl();
            break;
        case 1:
            CIPTVServiceAPI::DestroyBroadcastData();
            break;
        case 2:
            CIPTVServiceAPI::DestroyIPTVDataSubscriber();
            break;
        default:
            CIPTVServiceAPI::DestroyIPGUtil();
        }
    }

    /// The number of calls that returned true.
    unsigned CallAll(unsigned& made)
    {
        std::string genre;
        int key = 0;
        unsigned answered = 0;
        auto const count = [&](bool result) {
            ++made;
            answered += result ? 1 : 0;
        };
        if (m_player != nullptr) {
            count(m_player->MuteAudio(true));
        }
        if (m_broadcast != nullptr) {
            count(m_broadcast->UnMuteByRatingPin());
        }
        if (m_subscriber != nullptr) {
            count(m_subscriber->SubscribeForPES([](ZVPESData&, void*) {}, nullptr, key));
            m_subscriber->UnSubscribeForPES(key);
        }
        if (m_guide != nullptr) {
            count(m_guide->GetGenre(1, genre));
        }
        return answered;
    }

private:
    std::minstd_rand m_random;
    IPlayerControl* m_player = nullptr;
    IBroadcastData* m_broadcast = nullptr;
    IIPTVDataSubscriber* m_subscriber = nullptr;
    IIPGUtil* m_guide = nullptr;
};

class LifetimeFault : public FaultTest
{
protected:
    /// Runs `use` repeatedly on eight threads until `meanwhile` returns.
    template <typename Use, typename Meanwhile>
    void RunUsers(Use use, Meanwhile meanwhile)
    {
        std::atomic<bool> stop{false};
        std::vector<std::thread> users;
        for (unsigned seed = 1; seed <= Users; ++seed) {
            users.emplace_back([&stop, use, seed] {
                RandomUser user(seed);
                while (!stop) {
                    use(user);
                }
            });
        }
        meanwhile();
        stop = true;
        for (std::thread& user : users) {
            user.join();
        }
        FactoryObjects::Destroy();
    }

    WirePeer m_observer;
    CProxyDBusHelper m_other{"FENCE"}; // keeps the connection
    LoopThread m_loop;
};

TEST_F(LifetimeFault, F13_CreateCallDestroyAndServiceDeathOnEightThreads)
{
    SlowLog const slow;
    std::atomic<unsigned> rounds{0};
    std::atomic<unsigned> made{0};
    std::atomic<unsigned> answered{0};
    unsigned deaths = 0;
    auto const use = [&](RandomUser& user) {
        unsigned calls = 0;
        user.CreateOne();
        answered += user.CallAll(calls);
        user.DestroyOne();
        made += calls;
        ++rounds;
    };
    auto const letTheServiceDie = [&] {
        PeerProcess service({"service"});
        unsigned const before = rounds;
        EXPECT_TRUE(WaitUntil([&] { return rounds > before + 40; }, 60s));
        service.Kill();
        ++deaths;
        EXPECT_TRUE(m_observer.WaitForOwner(HelperName, false));
    };
    Repeat(ShortOrLong(1, 40), [&] {
        RunUsers(use, [&] {
            unsigned const before = rounds;
            while (rounds < before + 250 && !HasFailure()) {
                letTheServiceDie();
            }
        });
    });
    EXPECT_GT(answered, 0U);
    EXPECT_GT(made, answered);
    SetRemark(std::to_string(rounds) + " rounds, " + std::to_string(answered) + " of " +
              std::to_string(made) + " calls answered, " + std::to_string(deaths) + " deaths");
}

/// Each announcement waits for two seconds.
TEST_F(LifetimeFault, F14_CreateAndDestroyWhileTheServiceStandsStill)
{
    PeerProcess service({"service"});
    ASSERT_TRUE(m_observer.WaitForOwner(HelperName, true));
    service.Stop();
    std::atomic<std::chrono::milliseconds::rep> longest{0};
    auto const use = [&longest](RandomUser& user) {
        auto const start = std::chrono::steady_clock::now();
        IPlayerControl* player = nullptr;
        user.Draw() % 2 == 0 ? CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player)
                             : CIPTVServiceAPI::DestroyPlayerControl();
        auto const took = std::chrono::steady_clock::now() - start;
        auto const milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(took).count();
        for (auto known = longest.load(); known < milliseconds;) {
            longest.compare_exchange_weak(known, milliseconds);
        }
    };
    RunUsers(use, [] { std::this_thread::sleep_for(ShortOrLong(9s, 30s)); });
    EXPECT_GE(longest, 2000) << "no call waited for the announcement";
    EXPECT_LT(longest, 4500) << "two attempts of 2 s, and the time that threads take to wake up";
    SetRemark("at most " + std::to_string(longest) + " ms");
}

TEST_F(LifetimeFault, F15_AForkedChildExits)
{
    if (UnderAddressSanitizer || UnderThreadSanitizer) {
        GTEST_SKIP() << "a sanitizer's locks can stay locked in the forked child of a process with threads";
    }
    PeerProcess const service({"service"});
    Repeat(1, [] {
        ChildProcess application({FORKING_APPLICATION, ShortOrLong("40", "2000")});
        ASSERT_EQ(application.Wait(60s), (ExitStatus{0, 0})) << application.Errors();
        EXPECT_EQ(application.Output(), ShortOrLong("40 of 40 exited\n", "2000 of 2000 exited\n"));
    });
}

} // namespace
