// SPDX-License-Identifier: MIT
#include "MessageLog.h"
#include "PrivateBus.h"
#include "WirePeer.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

std::string Environment()
{
    char const* const address = getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address != nullptr ? address : "(unset)";
}

bool Exists(std::string const& path)
{
    struct stat ignored = {};
    return stat(path.c_str(), &ignored) == 0;
}

WireTarget Ping(WirePeer const& peer)
{
    return {peer.Name(), "/", "org.freedesktop.DBus.Peer", "Ping"};
}

} // namespace

TEST(PrivateBusTest, IsReadyWhenConstructedAndSetsTheEnvironment)
{
    auto const before = Environment();
    std::string directory;
    pid_t pid = 0;
    {
        PrivateBus const bus;
        directory = bus.Directory();
        pid = bus.Pid();
        EXPECT_EQ(Environment(), bus.Address());
        WirePeer peer;
        EXPECT_EQ(peer.Name().front(), ':');
    }
    EXPECT_EQ(Environment(), before);
    EXPECT_FALSE(Exists(directory));
    EXPECT_EQ(kill(pid, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST(PrivateBusTest, KeepsTheEnvironmentOnRequest)
{
    auto const before = Environment();
    BusOptions options;
    options.setEnvironment = false;
    PrivateBus const bus(options);
    EXPECT_EQ(Environment(), before);
    EXPECT_NO_THROW(WirePeer(bus.Address()));
}

TEST(PrivateBusTest, NestedBusesRestoreEachOther)
{
    PrivateBus const outer;
    {
        PrivateBus const inner;
        EXPECT_NE(inner.Address(), outer.Address());
        EXPECT_EQ(Environment(), inner.Address());
    }
    EXPECT_EQ(Environment(), outer.Address());
}

TEST(PrivateBusTest, ReportsWhatToInstallWithoutADaemon)
{
    BusOptions options;
    options.program = "no-such-dbus-daemon";
    try {
        PrivateBus const bus(options);
        FAIL() << "started " << bus.Pid();
    } catch (std::runtime_error const& error) {
        EXPECT_NE(strstr(error.what(), "install the package dbus"), nullptr) << error.what();
    }
}

TEST(PrivateBusTest, ReportsTheReasonForABrokenConfiguration)
{
    BusOptions options;
    options.extraConfig = "<nonsense/>";
    try {
        PrivateBus const bus(options);
        FAIL() << "started " << bus.Pid();
    } catch (std::runtime_error const& error) {
        EXPECT_NE(strstr(error.what(), "nonsense"), nullptr) << error.what();
    }
}

TEST(PrivateBusTest, AppliesExtraLimitsAndPolicies)
{
    BusOptions options;
    options.extraConfig = R"(<limit name="max_match_rules_per_connection">1</limit>
        <policy context="default"><deny own="org.corvel.denied"/></policy>)";
    PrivateBus const bus(options);
    WirePeer peer(bus.Address());
    peer.AddMatch("type='signal',interface='a.b'");
    EXPECT_THROW(peer.AddMatch("type='signal',interface='c.d'"), std::runtime_error);
    EXPECT_THROW(peer.OwnName("org.corvel.denied"), std::runtime_error);
    EXPECT_TRUE(peer.OwnName("org.corvel.allowed"));
}

TEST(PrivateBusTest, DeniesEverythingWithoutTheOpenPolicy)
{
    BusOptions options;
    options.openPolicy = false;
    options.extraConfig = R"(<policy context="default"><allow user="*"/>
        <allow send_destination="org.freedesktop.DBus"/><allow receive_sender="org.freedesktop.DBus"/></policy>)";
    PrivateBus const bus(options);
    WirePeer one(bus.Address());
    WirePeer two(bus.Address());
    EXPECT_THROW(one.OwnName("org.corvel.any"), std::runtime_error);
    EXPECT_EQ(one.Call(Ping(two)).errorName, "org.freedesktop.DBus.Error.AccessDenied");
}

TEST(PrivateBusTest, KillDisconnectsAndRestartListensOnTheSameAddress)
{
    PrivateBus bus;
    auto const address = bus.Address();
    auto const firstPid = bus.Pid();
    WirePeer before(address);
    bus.Kill();
    EXPECT_EQ(bus.Pid(), 0);
    EXPECT_TRUE(before.WaitDisconnected());
    EXPECT_THROW(WirePeer{address}, std::runtime_error);
    bus.Kill();

    bus.Restart();
    EXPECT_EQ(bus.Address(), address);
    EXPECT_NE(bus.Pid(), firstPid);
    WirePeer one(address);
    WirePeer two(address);
    EXPECT_EQ(one.Call(Ping(two)).kind, WireKind::Reply);

    bus.Restart();
    EXPECT_TRUE(one.WaitDisconnected());
    EXPECT_NO_THROW(WirePeer{address});
}

TEST(PrivateBusTest, StoppedBusAnswersNothingUntilContinued)
{
    PrivateBus bus;
    WirePeer one;
    WirePeer two;
    bus.Stop();
    auto const silent = one.Call(Ping(two), {}, {50ms, false});
    EXPECT_EQ(silent.errorName, "org.freedesktop.DBus.Error.NoReply");
    bus.Continue();
    EXPECT_EQ(one.Call(Ping(two)).kind, WireKind::Reply);
}

TEST(PrivateBusTest, AStoppedBusCanBeDestroyedAndADeadOneCannotBeStopped)
{
    PrivateBus bus;
    bus.Stop();
    bus.Kill();
    EXPECT_THROW(bus.Stop(), std::logic_error);
    EXPECT_THROW(bus.Continue(), std::logic_error);
}

TEST(PrivateBusTest, OutlivesTheThreadThatMadeIt)
{
    BusOptions options;
    options.setEnvironment = false;
    std::unique_ptr<PrivateBus> bus;
    std::thread([&] { bus = std::make_unique<PrivateBus>(options); }).join();
    WirePeer one(bus->Address());
    WirePeer two(bus->Address());
    EXPECT_EQ(one.Call(Ping(two)).kind, WireKind::Reply);
    EXPECT_EQ(kill(bus->Pid(), 0), 0);
}
