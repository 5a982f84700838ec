// SPDX-License-Identifier: MIT
#pragma once

#include "process/FileHandle.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>

namespace zviptv::test {

/// Sends datagrams to a port of an address that was free when the sender was made.
class UdpSender
{
public:
    /// `interface` is the network interface for multicast.
    explicit UdpSender(std::string const& host, std::string const& interface = "")
        : m_isNew(host.find(':') != std::string::npos),
          m_socket(::socket(m_isNew ? AF_INET6 : AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_storage any{};
        any.ss_family = m_isNew ? AF_INET6 : AF_INET;
        socklen_t size = m_isNew ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
        FileHandle const probe(::socket(any.ss_family, SOCK_DGRAM, 0));
        Require(bind(probe.Get(), reinterpret_cast<sockaddr*>(&any), size) == 0);
        Require(getsockname(probe.Get(), reinterpret_cast<sockaddr*>(&any), &size) == 0);
        m_port = ntohs(m_isNew ? reinterpret_cast<sockaddr_in6&>(any).sin6_port
                               : reinterpret_cast<sockaddr_in&>(any).sin_port);
        unsigned int const index = interface.empty() ? 0 : if_nametoindex(interface.c_str());
        if (m_isNew) {
            auto& inet = reinterpret_cast<sockaddr_in6&>(m_to);
            inet.sin6_family = AF_INET6;
            inet.sin6_port = htons(m_port);
            inet.sin6_scope_id = index;
            Require(inet_pton(AF_INET6, host.c_str(), &inet.sin6_addr) == 1);
            Require(setsockopt(m_socket.Get(), IPPROTO_IPV6, IPV6_MULTICAST_IF, &index, sizeof(index)) == 0);
        } else {
            auto& inet = reinterpret_cast<sockaddr_in&>(m_to);
            inet.sin_family = AF_INET;
            inet.sin_port = htons(m_port);
            Require(inet_pton(AF_INET, host.c_str(), &inet.sin_addr) == 1);
            ip_mreqn request{};
            request.imr_ifindex = static_cast<int>(index);
            Require(setsockopt(m_socket.Get(), IPPROTO_IP, IP_MULTICAST_IF, &request, sizeof(request)) == 0);
        }
    }

    int Port() const { return m_port; }

    template <typename Text>
    void Send(Text const& datagram)
    {
        socklen_t const size = m_isNew ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
        Require(sendto(m_socket.Get(), datagram.data(), datagram.size(), 0,
                       reinterpret_cast<sockaddr*>(&m_to), size) == static_cast<ssize_t>(datagram.size()));
    }

private:
    static void Require(bool holds)
    {
        if (!holds) {
            throw std::system_error(errno, std::generic_category(), "cannot send datagrams");
        }
    }

    bool m_isNew; ///< IPv6
    FileHandle m_socket;
    sockaddr_storage m_to{};
    std::uint16_t m_port = 0;
};

} // namespace zviptv::test
