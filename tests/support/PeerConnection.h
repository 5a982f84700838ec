// SPDX-License-Identifier: MIT
#pragma once

#include "BusLoop.h"
#include "WirePeer.h"

#include <atomic>

namespace zviptv::test {

/// The working part of a WirePeer: its loop, its handler and its outstanding calls.
class WirePeer::Impl
{
public:
    explicit Impl(std::string const& address);

    std::string const& Name() const { return m_loop.Name(); }
    WireMessage Call(WireTarget const& target, WireBody const& body, CallOptions const& options);
    /// Sends the message `count` times; returns the serial of the last one.
    std::uint32_t Send(MessageHandle const& message, std::size_t count);
    void SetHandler(CallHandler handler);
    void SetRecording(bool on) { m_recording = on; }
    void Disconnect();
    bool IsConnected();

    MessageLog received;
    /// Messages of the bus itself, separate from `received`, which a test may clear or stop.
    MessageLog busNotices;

private:
    void Receive(DBusMessage* message);
    void AnswerCall(DBusMessage* call, WireMessage const& decoded);
    MessageHandle MakeAnswer(DBusMessage* call, WireMessage const& decoded,
                             std::chrono::milliseconds& delay) const;

    std::atomic<bool> m_recording{true};
    /// Used on the loop's thread only.
    CallHandler m_handler;
    /// Last, so that its thread ends before anything it uses.
    BusLoop m_loop;
};

} // namespace zviptv::test
