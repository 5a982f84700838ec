// SPDX-License-Identifier: MIT
#pragma once

#include "MessageLog.h"
#include "WireAnswer.h"
#include "WireBody.h"
#include "WireMessage.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::test {

/// The destination of a message. For signals, an empty one is a broadcast.
struct WireTarget
{
    std::string destination;
    std::string path;
    std::string interface;
    std::string member;
};

struct CallOptions
{
    std::chrono::milliseconds timeout = patience;
    bool noAutoStart = false;
};

/// Runs on the peer's thread. It may use Emit() and CallWithoutReply() of the same peer, but none of
/// its methods that wait for an answer from the bus.
using CallHandler = std::function<WireAnswer(WireMessage const&)>;

/// A participant of the bus made of nothing but libdbus, on a private connection that a thread of its
/// own serves. All methods may be called from any thread. Methods that need the connection throw
/// std::runtime_error when it is gone, and std::invalid_argument for names, paths and bodies that
/// libdbus would refuse to put on the wire.
class WirePeer
{
public:
    /// Connects to the address and starts the thread; throws std::runtime_error if there is no bus.
    explicit WirePeer(std::string const& address);
    /// Connects to DBUS_SYSTEM_BUS_ADDRESS.
    WirePeer();
    /// Disconnects; the handler does not run any more when this returns.
    ~WirePeer();
    WirePeer(WirePeer const&) = delete;
    WirePeer& operator=(WirePeer const&) = delete;

    /// The unique name, which is kept after Disconnect().
    std::string const& Name() const;
    /// Flags of RequestName.
    static constexpr std::uint32_t AllowReplacement = 1;
    static constexpr std::uint32_t ReplaceExisting = 2;
    static constexpr std::uint32_t DoNotQueue = 4;

    /// True if this connection now is the primary owner.
    bool OwnName(std::string const& name, std::uint32_t flags = DoNotQueue);
    /// True if this connection owned the name and does not any more.
    bool ReleaseName(std::string const& name);

    /// Sends a method call and waits. The result is a Reply or an Error; made here are
    /// "org.freedesktop.DBus.Error.NoReply" at the time-out and "org.freedesktop.DBus.Error.Disconnected"
    /// when the own connection breaks. A partner that goes is "NoReply", said by the daemon.
    WireMessage Call(WireTarget const& target, WireBody const& body = {}, CallOptions const& options = {});
    /// Sends a method call that wants no reply; returns its serial.
    std::uint32_t CallWithoutReply(WireTarget const& target, WireBody const& body = {});
    /// Sends a signal; returns its serial. Returns when the message is in the connection's queue.
    std::uint32_t Emit(WireTarget const& target, WireBody const& body = {});
    /// The same signal `count` times, built once.
    void EmitMany(WireTarget const& target, WireBody const& body, std::size_t count);
    /// Returns when the daemon has worked off everything this peer sent before.
    void Sync();

    /// Answers incoming method calls; without one they get UnknownMethod. When this returns, the
    /// former handler neither runs nor will run again. An exception of the handler becomes the error
    /// "org.corvel.zviptvapi.test.HandlerFailed".
    void SetHandler(CallHandler handler);
    /// Whether incoming messages are kept in Received(); on at first. Off for floods.
    void SetRecording(bool on);

    /// Incoming calls and signals, also the bus's own ("NameAcquired", and "Disconnected" at the end).
    MessageLog& Received();
    std::optional<WireMessage> WaitFor(MessagePredicate const& predicate,
                                       std::chrono::milliseconds timeout = patience);

    void AddMatch(std::string const& rule);
    void RemoveMatch(std::string const& rule);
    std::vector<std::string> ListNames();
    /// The unique name of the owner, empty if there is none.
    std::string GetNameOwner(std::string const& name);
    /// Waits until the name has an owner (or has none); true if that came within the time-out.
    bool WaitForOwner(std::string const& name, bool owned, std::chrono::milliseconds timeout = patience);

    /// Closes the connection at once, unsent messages included, so that its names vanish.
    void Disconnect();
    bool IsConnected();
    /// True when the connection broke, or was closed, within the time-out.
    bool WaitDisconnected(std::chrono::milliseconds timeout = patience);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zviptv::test
