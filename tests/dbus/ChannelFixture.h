// SPDX-License-Identifier: MIT
#pragma once

#include "Bytes.h"
#include "LogCapture.h"
#include "LoopRunner.h"
#include "PrivateBus.h"
#include "Said.h"
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

/// The words of the peer channel, spelled out once more so that a typo in the library shows.
constexpr char ChannelInterface[] = "org.corvel.zviptvapi.DbusCommunication";
constexpr char ChannelObject[] = "/org/corvel/zviptvapi/DbusCommunication/";

/// A message of text or byte entries.
CMessageBuffer Message(std::initializer_list<TextEntry> entries);

/// The entries of a buffer in the form of the wire. Fails the test where a declared size differs from the
/// value's.
WireEntries EntriesOf(CMessageBuffer const& message);

/// A channel and its callbacks as functions. The functions must not be changed while the channel's loop runs.
class TestChannel
{
public:
    explicit TestChannel(std::string const& name = "IPGUTIL");

    CProxyDBusHelper* operator->() const { return m_channel.get(); }
    /// Ends the channel; allowed in its callbacks.
    void Destroy() { m_channel.reset(); }
    bool IsDestroyed() const { return m_channel == nullptr; }

    /// What a partner calls or signals.
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

/// A bus of the test's own with one foreign participant on it.
class BusTest : public testing::Test
{
protected:
    PrivateBus m_bus;
    WirePeer m_partner;
};

/// The library's log is caught. Nobody iterates the default context but the test, with RunUntil.
class ChannelTest : public testing::Test
{
protected:
    /// Runs the loop until the line has been written.
    bool RunUntilSaid(EZVLogPriority priority, std::string const& message)
    {
        return RunUntil([&] { return m_log.Has(priority, message); });
    }

    /// Connects the channel and returns when the bus has done all that this asked of it, and the channel has
    /// handled the answers: the subscription is in force, the name watch has seen the partner.
    void ConnectAndSettle(TestChannel& channel);

    PrivateBus m_bus;
    LogCapture m_log;
    WirePeer m_partner;
};

/// The default context is iterated on a thread of its own, so that the test may block.
class LoopedChannelTest : public ChannelTest
{
protected:
    bool WaitUntilSaid(EZVLogPriority priority, std::string const& message)
    {
        return WaitUntil([&] { return m_log.Has(priority, message); }, patience);
    }

    LoopThread m_loop;
};

} // namespace zviptv::test
