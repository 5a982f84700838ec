// SPDX-License-Identifier: MIT
#include "DenseStream.h"
#include "Processes.h"
#include "Sanitizers.h"
#include "SimulatorTest.h"
#include "WaitUntil.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace zviptv::test {
namespace {

constexpr std::size_t Many = 20;
constexpr std::size_t StackMegabytes = 8;

constexpr bool MeasuresAddresses = !UnderThreadSanitizer && !UnderAddressSanitizer;

/// Applications that leave while no packet is sent.
class LeavingApplications : public Simulator
{
protected:
    void Begin(std::vector<std::string> options)
    {
        std::string const path = m_bus.Directory() + "/short.ts";
        WriteDenseStream(path, {});
        setenv("MALLOC_ARENA_MAX", "1", 1); // an arena takes 64 MB of address space
        options.insert(options.end(), {"--ts", path, "--speed", "1000"});
        Start(options);
    }

    /// Address space of the simulator, in megabytes. A thread that has ended keeps its stack there until
    /// somebody joins it.
    std::size_t Megabytes() const
    {
        std::ifstream status("/proc/" + std::to_string(ServicePid()) + "/status");
        std::size_t kilobytes = 0;
        for (std::string word; status >> word && kilobytes == 0;) {
            if (word == "VmSize:") {
                status >> kilobytes;
            }
        }
        return kilobytes / 1024;
    }

    /// Many come, and leave by leaving the bus, or in order.
    static void AnnounceAndLeave(bool inOrder)
    {
        std::vector<Application> applications(Many);
        for (Application& application : applications) {
            application.Announce(SubscriberWord);
        }
        for (std::size_t i = 0; inOrder && i < Many; ++i) {
            applications[i].Announce(SubscriberWord, "n");
        }
    }

    void ExpectNothingKept(bool inOrder = false)
    {
        AnnounceAndLeave(inOrder); // what stays of the first ones is for those that come after them
        std::size_t const before = Megabytes();
        for (int round = 0; round < 4; ++round) {
            AnnounceAndLeave(inOrder);
        }
        if (!MeasuresAddresses) {
            std::puts("The address space is not looked at: under a sanitizer it tells nothing.");
            return;
        }
        EXPECT_TRUE(WaitUntil([&] { return Megabytes() < before + 2 * Many * StackMegabytes; }, Patience))
            << Megabytes() << " MB, " << before << " before";
    }
};

/// Announces a data subscriber under a name. Returns the service's answer.
std::string AnnounceAs(Application& application, std::string const& name)
{
    return application.Peer()
        .Call({"org.corvel.zviptvapi.dbushelper", "/org/corvel/zviptvapi/dbushelper",
               "org.corvel.zviptvapi.dbushelper", "SendSignal"},
              Pairs({{"dbusname", name}, {"type", SubscriberWord}, {"add", "y"}}))
        .Value("dbusname");
}

TEST_F(LeavingApplications, BeforeAnyStream)
{
    Begin({"--wait-for", "1", "--quiet"});
    Application application;
    auto const threads = [this] { return ThreadsOf(m_simulator->Pid()); };
    std::size_t const most = threads() + 5; // GIO may start some
    for (std::string const name : {"no bus name ", "org.example.Nobody", ":9."}) {
        for (int i = 0; i < 50; ++i) {
            bool const isAnswered = !AnnounceAs(application, name + std::to_string(i)).empty();
            EXPECT_EQ(isAnswered, name == ":9.") << name;
        }
        EXPECT_TRUE(WaitUntil([&] { return threads() <= most; }, Patience)) << name << ": " << threads();
    }
}

TEST_F(LeavingApplications, AfterTheEndOfTheStream)
{
    Begin({});
    ASSERT_TRUE(m_simulator->WaitForErrors("the stream has ended", Patience));
    ExpectNothingKept();
}

TEST_F(LeavingApplications, BeforeTheStreamBegins)
{
    Begin({"--wait-for", "1", "--quiet"}); // no status, either
    ExpectNothingKept();
}

TEST_F(LeavingApplications, InOrder)
{
    Begin({"--wait-for", "1", "--quiet"});
    ExpectNothingKept(true);
}

} // namespace
} // namespace zviptv::test
