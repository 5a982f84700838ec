// SPDX-License-Identifier: MIT
#pragma once

#include "Bytes.h"
#include "ChildProcess.h"
#include "FakeService.h"
#include "WirePeer.h"

#include <chrono>
#include <string>

namespace zviptv::test {

/// An application as the simulator sees it: made of libdbus, every wire word spelled out.
class Application
{
public:
    Application()
    {
        // The service asks whether the application follows; it does.
        m_peer.SetHandler([](WireMessage const&) { return WireAnswer(WireEntries{}); });
    }

    WirePeer& Peer() { return m_peer; }

    /// Announces a channel; returns the bus name of the endpoint it is given.
    std::string Announce(std::string const& type, std::string const& add = "y")
    {
        WireMessage const reply =
            m_peer.Call({"org.corvel.zviptvapi.dbushelper", "/org/corvel/zviptvapi/dbushelper",
                         "org.corvel.zviptvapi.dbushelper", "SendSignal"},
                        Pairs({{"dbusname", m_peer.Name()}, {"type", type}, {"add", add}}));
        m_partner = reply.Value("dbusname");
        return m_partner;
    }

    /// One request to the endpoint of the last announcement.
    WireMessage Ask(std::string const& type, std::initializer_list<TextEntry> entries)
    {
        return m_peer.Call({m_partner, ChannelPath(type), "org.corvel.zviptvapi.DbusCommunication", "Send"},
                           Entries(entries));
    }

    /// The bytes of all PES packets of a PID that have arrived so far, one string a packet.
    std::vector<std::string> Packets(std::string const& pid)
    {
        std::vector<std::string> packets;
        for (WireMessage const& message : m_peer.Received().All()) {
            if (message.member == "SendSignal" && message.Value("functionname") == "PESCB" &&
                message.Value("pesPID") == pid) {
                packets.push_back(message.Value("pesData"));
            }
        }
        return packets;
    }

    /// True when this many packets of a PID have arrived in all.
    bool WaitForPackets(std::string const& pid, std::size_t count)
    {
        return m_peer.Received().WaitForCount(
            [&pid](WireMessage const& message) { return message.Value("pesPID") == pid; }, count);
    }

private:
    WirePeer m_peer;
    std::string m_partner;
};

} // namespace zviptv::test
