// SPDX-License-Identifier: MIT
#include "input/UdpReceiver.h"

#include "UdpSender.h"

#include "input/UdpSocket.h"
#include "stream/PacketSource.h"

#include <gmock/gmock.h>
#include <ifaddrs.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <fstream>

namespace zviptv::test {
namespace {

using sim::OpenUdpSocket;
using sim::ParseInputUrl;

/// Receives until `count` datagrams have arrived, or until nothing arrives for a long time.
std::vector<std::string> TakeFrom(sim::UdpReceiver& receiver, std::size_t count)
{
    std::vector<std::string> texts;
    while (texts.size() < count) {
        pollfd ready{receiver.ReadyEnd(), POLLIN, 0};
        if (poll(&ready, 1, 20'000) != 1) {
            break;
        }
        receiver.Acknowledge();
        sim::Datagrams taken;
        receiver.Take(taken);
        taken.ForEach([&texts](ByteView datagram, std::int64_t) {
            texts.emplace_back(datagram.begin(), datagram.end());
        });
    }
    return texts;
}

void Pass(std::string const& url, UdpSender& sender)
{
    sim::UdpReceiver receiver(OpenUdpSocket(ParseInputUrl(url)));
    std::vector<std::string> sent;
    for (int i = 0; i < 200; ++i) {
        sent.push_back("datagram " + std::to_string(i));
        sender.Send(sent.back());
    }
    EXPECT_EQ(TakeFrom(receiver, sent.size()), sent) << url;
    EXPECT_EQ(receiver.Lost(), 0U);
}

TEST(UdpReceiver, ReceivesDatagramsInOrder)
{
    for (char const* const host : {"127.0.0.1", "::1"}) {
        UdpSender sender(host);
        std::string const bracketed = std::string(host) == "::1" ? "[::1]" : host;
        Pass("udp://" + bracketed + ":" + std::to_string(sender.Port()), sender);
        Pass("udp://@:" + std::to_string(sender.Port()), sender);
    }
}

TEST(UdpReceiver, JoinsAGroup)
{
    UdpSender sender("239.255.17.4", "lo");
    Pass("udp://@239.255.17.4:" + std::to_string(sender.Port()) + "?iface=lo", sender);
}

/// A network interface that multicast of IPv6 can go out of; the loopback interface has no route for it.
std::string MulticastInterface()
{
    ifaddrs* first = nullptr;
    getifaddrs(&first);
    std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> const owner(first, freeifaddrs);
    for (ifaddrs const* one = first; one != nullptr; one = one->ifa_next) {
        constexpr unsigned int Wanted = IFF_UP | IFF_MULTICAST;
        if (one->ifa_addr != nullptr && one->ifa_addr->sa_family == AF_INET6 &&
            (one->ifa_flags & Wanted) == Wanted) {
            return one->ifa_name;
        }
    }
    return {};
}

/// Of the interface's own scope: it does not leave the machine.
TEST(UdpReceiver, JoinsAGroupOfIpv6)
{
    std::string const interface = MulticastInterface();
    if (interface.empty()) {
        GTEST_SKIP() << "no network interface that is up has multicast of IPv6";
    }
    UdpSender sender("ff11::17:4", interface);
    Pass("udp://@[ff11::17:4]:" + std::to_string(sender.Port()) + "?iface=" + interface, sender);
}

/// Wrong addresses and their error messages.
TEST(UdpReceiver, ReportsWhyItCannotReceive)
{
    UdpSender const sender("127.0.0.1");
    std::string const port = ":" + std::to_string(sender.Port());
    FileHandle const taken = OpenUdpSocket(ParseInputUrl("udp://127.0.0.1" + port));
    for (auto const& [url, reason] : std::map<std::string, std::string>{
             {"udp://127.0.0.1" + port, "another program receives at port " + port.substr(1) + "; stop it"},
             {"udp://@" + port, "another program receives at port"},
             {"udp://@239.1.1.1" + port + "?iface=nosuch0",
              "there is no network interface 'nosuch0'; 'ip link' lists"},
             {"rtp://127.0.0.1" + port + "?iface=lo",
              "iface needs a multicast group, which '127.0.0.1' is not"},
             {"udp://203.0.113.7" + port, "203.0.113.7 is neither a multicast group nor an address of this"},
             {"udp://[2001:db8::7]" + port, "2001:db8::7 is neither a multicast group nor an address of"},
             {"udp://no.such.host.invalid" + port, "'no.such.host.invalid' is not an address: "},
         }) {
        try {
            OpenUdpSocket(ParseInputUrl(url));
            ADD_FAILURE() << url;
        } catch (sim::StreamError const& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("cannot receive " + url + ": " + reason));
        }
    }
}

TEST(UdpReceiver, SharesAGroup)
{
    UdpSender sender("239.255.17.5", "lo");
    std::string const url = "udp://@239.255.17.5:" + std::to_string(sender.Port()) + "?iface=lo";
    sim::UdpReceiver first(OpenUdpSocket(ParseInputUrl(url)));
    sim::UdpReceiver second(OpenUdpSocket(ParseInputUrl(url)));
    sender.Send(std::string("to both"));
    EXPECT_EQ(TakeFrom(first, 1), std::vector<std::string>{"to both"});
    EXPECT_EQ(TakeFrom(second, 1), std::vector<std::string>{"to both"});
}

/// Room for three seconds at 20 Mbit/s, or for what the kernel allows a user without privileges. The kernel
/// reports twice what was asked for.
TEST(UdpReceiver, AsksForALargeSocketBuffer)
{
    constexpr int Wanted = 8 * 1024 * 1024;
    int most = 0;
    ASSERT_TRUE(std::ifstream("/proc/sys/net/core/rmem_max") >> most);
    UdpSender const sender("127.0.0.1");
    FileHandle const socket =
        OpenUdpSocket(ParseInputUrl("rtp://127.0.0.1:" + std::to_string(sender.Port())));
    int size = 0;
    socklen_t length = sizeof(size);
    ASSERT_EQ(getsockopt(socket.Get(), SOL_SOCKET, SO_RCVBUF, &size, &length), 0);
    EXPECT_GE(size, 2 * std::min(most, Wanted));
    if (int const force = Wanted;
        setsockopt(socket.Get(), SOL_SOCKET, SO_RCVBUFFORCE, &force, sizeof(force)) == 0) {
        EXPECT_EQ(size, 2 * Wanted) << "a privileged user is not limited";
    }
}

TEST(UdpReceiver, DropsEarlierDatagrams)
{
    UdpSender sender("127.0.0.1");
    FileHandle socket = OpenUdpSocket(ParseInputUrl("udp://127.0.0.1:" + std::to_string(sender.Port())));
    sender.Send(std::string("before"));
    sim::UdpReceiver receiver(std::move(socket));
    sender.Send(std::string("after"));
    EXPECT_EQ(TakeFrom(receiver, 1), std::vector<std::string>{"after"});
}

} // namespace
} // namespace zviptv::test
