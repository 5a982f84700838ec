// SPDX-License-Identifier: MIT
#include "input/UdpSocket.h"

#include "stream/PacketSource.h"

#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace zviptv::sim {

namespace {

constexpr int BufferSize = 8 * 1024 * 1024; // three seconds at 20 Mbit/s, if the kernel allows it

using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

[[noreturn]] void Fail(InputUrl const& url, std::string const& reason)
{
    throw StreamError("cannot receive " + url.text + ": " + reason);
}

Addresses Resolve(InputUrl const& url)
{
    addrinfo hints{};
    hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_family = url.host.empty() ? AF_INET6 : AF_UNSPEC; // every address, also of IPv4
    addrinfo* found = nullptr;
    int const status = getaddrinfo(url.host.empty() ? nullptr : url.host.c_str(),
                                   std::to_string(url.port).c_str(), &hints, &found);
    if (status != 0) {
        Fail(url, "'" + url.host + "' is not an address: " + gai_strerror(status) +
                      "; use a numeric one, for example 239.1.1.1");
    }
    return {found, freeaddrinfo};
}

bool IsGroup(addrinfo const& address)
{
    if (address.ai_family == AF_INET) {
        auto const& inet = *reinterpret_cast<sockaddr_in const*>(address.ai_addr);
        return IN_MULTICAST(ntohl(inet.sin_addr.s_addr));
    }
    return IN6_IS_ADDR_MULTICAST(&reinterpret_cast<sockaddr_in6 const*>(address.ai_addr)->sin6_addr);
}

unsigned int InterfaceOf(InputUrl const& url)
{
    unsigned int const index = url.interface.empty() ? 0 : if_nametoindex(url.interface.c_str());
    if (!url.interface.empty() && index == 0) {
        Fail(url, "there is no network interface '" + url.interface + "'; 'ip link' lists the interfaces");
    }
    return index;
}

void Set(FileHandle const& socket, int level, int option, int value)
{
    setsockopt(socket.Get(), level, option, &value, sizeof(value)); // the input also works without it
}

int Join(FileHandle const& socket, addrinfo const& address, unsigned int interface)
{
    if (address.ai_family == AF_INET) {
        Set(socket, IPPROTO_IP, IP_MULTICAST_ALL, 0); // without the groups of other programs
        ip_mreqn request{};
        request.imr_multiaddr = reinterpret_cast<sockaddr_in const*>(address.ai_addr)->sin_addr;
        request.imr_ifindex = static_cast<int>(interface);
        return setsockopt(socket.Get(), IPPROTO_IP, IP_ADD_MEMBERSHIP, &request, sizeof(request));
    }
    Set(socket, IPPROTO_IPV6, IPV6_MULTICAST_ALL, 0);
    ipv6_mreq request{};
    request.ipv6mr_multiaddr = reinterpret_cast<sockaddr_in6 const*>(address.ai_addr)->sin6_addr;
    request.ipv6mr_interface = interface;
    return setsockopt(socket.Get(), IPPROTO_IPV6, IPV6_JOIN_GROUP, &request, sizeof(request));
}

void Bind(InputUrl const& url, FileHandle const& socket, addrinfo& address, unsigned int interface)
{
    if (address.ai_family == AF_INET6) {
        auto& inet = *reinterpret_cast<sockaddr_in6*>(address.ai_addr);
        inet.sin6_scope_id = inet.sin6_scope_id == 0 ? interface : inet.sin6_scope_id;
        Set(socket, IPPROTO_IPV6, IPV6_V6ONLY, url.host.empty() ? 0 : 1);
    }
    if (bind(socket.Get(), address.ai_addr, address.ai_addrlen) == 0) {
        return;
    }
    std::string const port = std::to_string(url.port);
    switch (errno) {
    case EADDRINUSE:
        Fail(url, "another program receives at port " + port + "; stop it, or use another port");
    case EADDRNOTAVAIL:
        Fail(url, url.host + " is neither a multicast group nor an address of this machine; use one that "
                             "'ip address' shows, or a group, 224.0.0.0 to 239.255.255.255 or ff00::/8");
    case EACCES:
        Fail(url, "this user may not use port " + port + "; use one above 1023");
    default:
        Fail(url, std::strerror(errno));
    }
}

} // namespace

FileHandle OpenUdpSocket(InputUrl const& url)
{
    Addresses const addresses = Resolve(url);
    addrinfo& address = *addresses;
    bool const isGroup = IsGroup(address);
    unsigned int const interface = InterfaceOf(url);
    if (!isGroup && !url.interface.empty()) {
        Fail(url, "iface needs a multicast group, which '" + url.host + "' is not; leave iface out");
    }
    FileHandle socket(::socket(address.ai_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket) {
        Fail(url, std::strerror(errno));
    }
    Set(socket, SOL_SOCKET, SO_RCVBUF, BufferSize);
    Set(socket, SOL_SOCKET, SO_RCVBUFFORCE, BufferSize); // exceeds the limit, for root
    Set(socket, SOL_SOCKET, SO_RXQ_OVFL, 1);
    Set(socket, SOL_SOCKET, SO_TIMESTAMPNS, 1);
    if (isGroup) {
        Set(socket, SOL_SOCKET, SO_REUSEADDR, 1);
    }
    Bind(url, socket, address, interface);
    if (isGroup && Join(socket, address, interface) != 0) {
        Fail(url, std::string("cannot join the group: ") + std::strerror(errno) +
                      "; name a network interface that has multicast with ?iface=NAME");
    }
    return socket;
}

} // namespace zviptv::sim
