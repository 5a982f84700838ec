// SPDX-License-Identifier: MIT
#include "ClientTest.h"

#include "glib/Owned.h"

#include <filesystem>
#include <functional>
#include <system_error>

using namespace zviptv;
using namespace zviptv::test;

namespace {

/// What each open descriptor leads to.
std::vector<std::string> OpenDescriptors()
{
    std::vector<std::string> open;
    for (auto const& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code closed; // by another thread, meanwhile
        open.push_back(entry.path().filename().string() + " " +
                       std::filesystem::read_symlink(entry.path(), closed).string());
    }
    return open;
}

/// Makes and destroys televisions without iterating their context after a destruction, and expects no
/// descriptor to stay open. `use` runs before each destruction.
void ExpectNoneIsLeft(std::function<void(Television&)> const& use, Television::Options const& options = {},
                      int times = 100)
{
    auto const cycle = [&] {
        Television television(options);
        use(television);
    };
    cycle(); // GIO opens what it keeps for the process
    std::vector<std::string> const before = OpenDescriptors();
    for (int i = 0; i < times; ++i) {
        cycle();
        ASSERT_EQ(OpenDescriptors(), before) << "after television " << i;
    }
}

void CallFiveTimes(Television& television, int& ended)
{
    for (int i = 0; i < 5; ++i) {
        television.Player().MuteAudio(true, [&](Result<void> const&) { ++ended; });
    }
}

void Iterate()
{
    g_main_context_iteration(nullptr, FALSE);
}

using DescriptorsWithoutAService = ClientTest;
using DescriptorsWithAService = ServiceClientTest;

TEST_F(DescriptorsWithoutAService, AreClosedByADestructionAtOnce)
{
    ExpectNoneIsLeft([](Television&) {});
}

TEST_F(DescriptorsWithoutAService, AreClosedByADestructionAfterAnIteration)
{
    ExpectNoneIsLeft([](Television&) { Iterate(); });
}

TEST_F(DescriptorsWithoutAService, AreClosedByADestructionAfterACallThatFailed)
{
    ExpectNoneIsLeft(
        [](Television& television) { EXPECT_EQ(KindOf(television.Player().MuteAudio(true)), "no service"); });
}

TEST_F(DescriptorsWithoutAService, AreClosedByADestructionWithCallsThatWaitForTheBus)
{
    int ended = 0;
    ExpectNoneIsLeft([&](Television& television) { CallFiveTimes(television, ended); });
    EXPECT_EQ(ended, 505);
}

TEST_F(DescriptorsWithoutAService, AreClosedByADestructionWithCallsThatWaitForTheService)
{
    int ended = 0;
    ExpectNoneIsLeft([&](Television& television) {
        EXPECT_EQ(KindOf(television.Player().MuteAudio(true)), "no service"); // it is on the bus
        CallFiveTimes(television, ended);
    });
    EXPECT_EQ(ended, 505);
}

TEST_F(DescriptorsWithAService, AreClosedByADestructionAtOnce)
{
    ExpectNoneIsLeft([](Television&) {});
}

TEST_F(DescriptorsWithAService, AreClosedByADestructionAfterACall)
{
    ExpectNoneIsLeft(
        [](Television& television) { EXPECT_TRUE(Succeeded(television.Player().MuteAudio(true))); });
}

TEST_F(DescriptorsWithAService, AreClosedByADestructionWhenTheServiceIsAvailable)
{
    ExpectNoneIsLeft([](Television& television) {
        EXPECT_TRUE(RunUntil([&] { return television.IsAvailable(); }));
        Subscription const subscription = television.SubscribePes({}, [](PesPacket const&) {});
    });
}

TEST_F(DescriptorsWithAService, AreClosedByADestructionWithCallsThatWaitForTheBus)
{
    int ended = 0;
    ExpectNoneIsLeft([&](Television& television) { CallFiveTimes(television, ended); });
    EXPECT_EQ(ended, 505);
}

TEST_F(DescriptorsWithAService, AreClosedByADestructionWithCallsThatWaitForAnAnswer)
{
    m_service->AnswerNothing("MuteAudio");
    int ended = 0;
    ExpectNoneIsLeft([&](Television& television) {
        EXPECT_TRUE(Succeeded(television.Player().MuteVideo(true))); // its channel is connected
        CallFiveTimes(television, ended);
    });
    EXPECT_EQ(ended, 505);
}

TEST(DescriptorsWithoutABus, AreClosedByADestructionWhileTheBusDoesNotAnswer)
{
    // A socket that accepts connections, and never answers.
    Owned<GSocketListener> const listener(g_socket_listener_new());
    guint16 const port = g_socket_listener_add_any_inet_port(listener.get(), nullptr, nullptr);
    ASSERT_NE(port, 0);
    Television::Options options;
    options.busAddress = "tcp:host=127.0.0.1,port=" + std::to_string(port);
    ExpectNoneIsLeft([](Television&) { Iterate(); }, options, 5);
}

} // namespace
