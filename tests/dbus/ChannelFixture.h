// SPDX-License-Identifier: MIT
#pragma once

#include "Bytes.h"
#include "LogCapture.h"
#include "LoggedLine.h"
#include "LoopRunner.h"
#include "PrivateBus.h"
#include "WaitUntil.h"
#include "WirePeer.h"

#include <zviptv/ProxyDBusHelper.h>

#include <gmock/gmock.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace zviptv::test {

/// The words of the peer channel, repeated here to find typos in the library.
constexpr char ChannelInterface[] = "org.corvel.zviptvapi.DbusCommunication";
constexpr char ChannelObject[] = "/org/corvel/zviptvapi/DbusCommunication/";

/// A message of text or byte entries.
CMessageBuffer Message(std::initializer_list<TextEntry> entries);

/// The entries of a buffer in the wire format. Fails the test if a declared size differs from that of the
/// value.
WireEntries EntriesOf(CMessageBuffer const& message);

/// A channel and its callbacks as functions. The functions must not be changed while the channel's loop runs.
class TestChannel
{
public:
    explicit TestChannel(std::string const& name = "IPGUTIL");

    CProxyDBusHelper* operator->() const { return m_channel.get(); }
    /// Destroys the channel. May be called in its callbacks.
    void Destroy() { m_channel.reset(); }
    bool IsDestroyed() const { return m_channel == nullptr; }

    /// Calls and signals of a partner.
    WireTarget Target(std::string const& member) const;

    std::function<CMessageBuffer(CMessageBuffer&)> onMessage;
    std::function<void(CMessageBuffer&)> onNotification;
    std::function<void(std::string, std::string)> onDisconnect;

private:
    static CMessageBuffer HandleMessage(CMessageBuffer& request, void* self);
    static void HandleNotification(CMessageBuffer& notification, void* self);
    static void HandleDisconnect(std::string partner, std::string own, void* self);

    std::string m_path;
    std::string m_publicName;
    std::unique_ptr<CProxyDBusHelper> m_channel;
};

/// A private bus with one participant that does not use the library.
class BusTest : public testing::Test
{
protected:
    PrivateBus m_bus;
    WirePeer m_partner;
};

/// Captures the library's log. Only the test iterates the default context, with RunUntil.
class ChannelTest : public testing::Test
{
protected:
    /// Runs the loop until the line has been written.
    bool RunUntilLogged(EZVLogPriority priority, std::string const& message)
    {
        return RunUntil([&] { return m_log.Has(priority, message); });
    }

    /// Connects the channel. Returns when the bus has handled all requests for this, and the channel the
    /// answers: the subscription works, and the name watch knows the partner.
    void ConnectAndSettle(TestChannel& channel);

    PrivateBus m_bus;
    LogCapture m_log;
    WirePeer m_partner;
};

/// A separate thread iterates the default context, so that the test may block.
class LoopedChannelTest : public ChannelTest
{
protected:
    bool WaitUntilLogged(EZVLogPriority priority, std::string const& message)
    {
        return WaitUntil([&] { return m_log.Has(priority, message); }, patience);
    }

    LoopThread m_loop;
};

} // namespace zviptv::test
