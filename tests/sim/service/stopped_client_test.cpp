// SPDX-License-Identifier: MIT
#include "Crowd.h"
#include "Sanitizers.h"
#include "WaitUntil.h"

#include "tools/sim/endpoints/Subscriber.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace zviptv::test {
namespace {

/// AddressSanitizer's quarantine is cut to 1 MiB here; each thread has one too, and sizes are rounded up.
constexpr std::size_t SanitizerSlack = UnderAddressSanitizer ? 8 * 1024 * 1024 : 0;

/// What may wait for one application: the queue, and a window on its way. Twice that, for the heap's gaps.
constexpr std::size_t GrowthLimit =
    2 * (sim::Subscriber::MaxQueuedBytes + sim::Subscriber::WindowBytes) + SanitizerSlack;

constexpr DensePlan Plan{25, 80000, 2}; // 2 MB of video a second

/// Resident memory of a process, in bytes.
std::size_t ResidentBytes(pid_t pid)
{
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string word; status >> word;) {
        if (word == "VmRSS:") {
            std::size_t kilobytes = 0;
            status >> kilobytes;
            return kilobytes * 1024;
        }
    }
    return 0;
}

/// One process of several that get everything is stopped.
class StoppedClient : public Crowd
{
protected:
    void Begin()
    {
        char const* const options = std::getenv("ASAN_OPTIONS");
        setenv("ASAN_OPTIONS", (std::string(options ? options : "") + ":quarantine_size_mb=1").c_str(), 1);
        Play(Plan, {"--json"});
        m_stopped = Run({"pes", "--json"});
        EXPECT_TRUE(WaitForSubscribers(1));
        m_name = Status()["subscribers"][0]["application"].asString();
        for (auto& healthy : m_healthy) {
            healthy = Run({"pes", "--json"});
        }
        EXPECT_TRUE(WaitForSubscribers(3));
    }

    std::uint64_t Dropped(bool byTheStopped)
    {
        std::uint64_t dropped = 0;
        Json::Value const status = Status();
        for (Json::Value const& subscriber : status["subscribers"]) {
            bool const isStopped = subscriber["application"] == m_name;
            dropped += isStopped == byTheStopped ? subscriber["dropped"].asUInt64() : 0;
        }
        return dropped;
    }

    std::size_t QueuedForTheStopped()
    {
        Json::Value const status = Status();
        auto const& all = status["subscribers"];
        auto const it = std::find_if(all.begin(), all.end(), [this](Json::Value const& subscriber) {
            return subscriber["application"] == m_name;
        });
        return it == all.end() ? 0 : (*it)["queued"].asUInt();
    }

    static std::size_t Lines(ChildProcess const& process)
    {
        std::string const output = process.Output();
        return static_cast<std::size_t>(std::count(output.begin(), output.end(), '\n'));
    }

    /// The time stamps of a PID go on in step, over the end of the stream, too.
    static void ExpectNoGap(ChildProcess const& process, int pid)
    {
        constexpr std::int64_t Step = 90000 / Plan.perSecond;
        constexpr std::int64_t Length = 90000 * Plan.seconds;
        std::int64_t expected = -1;
        for (Json::Value const& packet : JsonLines(process.Output())) {
            std::int64_t const pts = packet["pts"].asInt64();
            if (packet["pid"] == pid && expected >= 0) {
                ASSERT_EQ((pts - expected) % Length, 0) << "after " << expected - Step;
            }
            expected = packet["pid"] == pid ? pts + Step : expected;
        }
        EXPECT_GE(expected, 0);
    }

    std::unique_ptr<ChildProcess> m_stopped;
    std::string m_name; ///< of the stopped one, on the bus
    std::array<std::unique_ptr<ChildProcess>, 2> m_healthy;
};

TEST_F(StoppedClient, DoesNotDelayOthersOrGrowTheSimulator)
{
    Begin();
    std::size_t const memory = ResidentBytes(ServicePid());
    std::size_t const before = Lines(*m_healthy[0]);
    m_stopped->Signal(SIGSTOP);
    // Until the dropped data would certainly have grown it.
    std::size_t most = 0;
    bool const hasDropped = WaitUntil(
        [&] {
            most = std::max(most, ResidentBytes(ServicePid()));
            return Dropped(true) / 3 * Plan.videoBytes > 2 * GrowthLimit;
        },
        4 * Patience);
    ASSERT_TRUE(hasDropped) << Status().toStyledString();
    if (!UnderThreadSanitizer) {
        EXPECT_LE(most, memory + GrowthLimit);
    } else {
        std::puts("Memory is not looked at: under this sanitizer it tells nothing.");
    }
    RecordProperty("grownKiB", static_cast<int>((most - std::min(most, memory)) / 1024));

    std::uint64_t const lost = Dropped(true);
    EXPECT_TRUE(WaitUntil([&] { return Lines(*m_healthy[0]) - before >= lost; }, Patience)) << lost;
    EXPECT_EQ(Dropped(false), 0U);
    EXPECT_EQ(Status()["dropped"].asUInt64(), Dropped(true));
    Application other;
    other.Announce("PLAYERCONTROL");
    EXPECT_EQ(Number(other.Ask("PLAYERCONTROL", {{"functionname", "GetSourceState"}}), "sourcestate"), "2");
    for (auto const& healthy : m_healthy) {
        for (int const pid : {DenseVideo, DenseAudio, DenseTeletext}) {
            ExpectNoGap(*healthy, pid);
        }
    }

    // More than the queued data and the data in transit.
    std::size_t const target = Lines(*m_stopped) + QueuedForTheStopped() + 4 * sim::Subscriber::Window;
    m_stopped->Signal(SIGCONT);
    EXPECT_TRUE(WaitUntil([&] { return Lines(*m_stopped) > target; }, 2 * Patience));
    EXPECT_EQ(Dropped(false), 0U);
}

} // namespace
} // namespace zviptv::test
