// SPDX-License-Identifier: MIT
#include "PeerConnection.h"

#include "WireCodec.h"
#include "WireSend.h"

#include <future>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

namespace zviptv::test {

namespace {

WireMessage DisconnectedError()
{
    WireMessage error;
    error.kind = WireKind::Error;
    error.errorName = "org.freedesktop.DBus.Error.Disconnected";
    return error;
}

/// The wait for one reply. libdbus drops the outstanding calls of a broken connection without a
/// notice, so the end of this object is the notice.
class PendingReply
{
public:
    PendingReply() = default;
    ~PendingReply()
    {
        if (!m_complete) {
            Complete(DisconnectedError());
        }
    }
    PendingReply(PendingReply const&) = delete;
    PendingReply& operator=(PendingReply const&) = delete;

    std::future<WireMessage> Future() { return m_promise.get_future(); }
    void Complete(WireMessage reply)
    {
        m_complete = true;
        m_promise.set_value(std::move(reply));
    }

private:
    std::promise<WireMessage> m_promise;
    bool m_complete = false;
};

void CompleteCall(DBusPendingCall* pending, void* data)
{
    MessageHandle const reply(dbus_pending_call_steal_reply(pending));
    static_cast<PendingReply*>(data)->Complete(DecodeMessage(reply.get()));
}

void FreePendingReply(void* data)
{
    delete static_cast<PendingReply*>(data);
}

bool IsBusNotice(WireMessage const& message)
{
    return message.interface == "org.freedesktop.DBus.Local" || message.sender == "org.freedesktop.DBus";
}

WireAnswer HandlerFailed(std::string const& text)
{
    return WireAnswer::Error("org.corvel.zviptvapi.test.HandlerFailed", text);
}

void StartCall(DBusConnection* connection, DBusMessage* call, std::chrono::milliseconds timeout,
               std::unique_ptr<PendingReply> waiting)
{
    DBusPendingCall* started = nullptr;
    if (dbus_connection_send_with_reply(connection, call, &started, static_cast<int>(timeout.count())) == 0) {
        throw std::bad_alloc();
    }
    // Null on a connection that is gone already.
    PendingHandle const pending(started);
    if (!pending) {
        return;
    }
    if (dbus_pending_call_set_notify(pending.get(), CompleteCall, waiting.get(), FreePendingReply) == 0) {
        throw std::bad_alloc();
    }
    static_cast<void>(waiting.release());
}

} // namespace

WirePeer::Impl::Impl(std::string const& address) : m_loop(address)
{
    m_loop.Start([this](DBusMessage* message) { Receive(message); });
}

WireMessage WirePeer::Impl::Call(WireTarget const& target, WireBody const& body, CallOptions const& options)
{
    if (m_loop.IsLoopThread()) {
        throw std::logic_error("a handler cannot wait for an answer on the connection it serves");
    }
    auto waiting = std::make_unique<PendingReply>();
    auto reply = waiting->Future();
    auto const call = NewCall(target, body, options.noAutoStart, false);
    m_loop.Run([&](DBusConnection* connection) {
        StartCall(connection, call.get(), options.timeout, std::move(waiting));
    });
    return reply.get();
}

std::uint32_t WirePeer::Impl::Send(MessageHandle const& message, std::size_t count)
{
    std::uint32_t serial = 1;
    m_loop.Run([&](DBusConnection* connection) {
        for (std::size_t i = 0; i < count && serial != 0; ++i) {
            // A message has one serial only, so each sending is one of a copy.
            MessageHandle const copy(dbus_message_copy(message.get()));
            serial = SendNow(connection, copy.get());
        }
    });
    if (serial == 0) {
        throw std::runtime_error("this peer is not connected to the bus any more");
    }
    return serial;
}

void WirePeer::Impl::SetHandler(CallHandler handler)
{
    m_loop.Run([&](DBusConnection*) { m_handler = std::move(handler); });
}

void WirePeer::Impl::Disconnect()
{
    m_loop.Run([](DBusConnection* connection) { dbus_connection_close(connection); });
}

bool WirePeer::Impl::IsConnected()
{
    bool connected = false;
    m_loop.Run(
        [&](DBusConnection* connection) { connected = dbus_connection_get_is_connected(connection) != 0; });
    return connected;
}

void WirePeer::Impl::Receive(DBusMessage* message)
{
    WireMessage decoded = DecodeMessage(message);
    if (decoded.kind != WireKind::Call && decoded.kind != WireKind::Signal) {
        return; // for example the bus's errors for signals to a process that has ended
    }
    if (IsBusNotice(decoded)) {
        busNotices.Add(decoded);
    }
    // Recorded before it is answered: after the answer, the call is in the record.
    if (m_recording) {
        received.Add(decoded);
    }
    if (decoded.kind == WireKind::Call) {
        AnswerCall(message, decoded);
    }
}

MessageHandle WirePeer::Impl::MakeAnswer(DBusMessage* call, WireMessage const& decoded,
                                         std::chrono::milliseconds& delay) const
{
    try {
        // A copy: the handler may replace itself.
        CallHandler const handler = m_handler;
        auto const answer = handler ? handler(decoded)
                                    : WireAnswer::Error("org.freedesktop.DBus.Error.UnknownMethod",
                                                        "no handler for " + decoded.member);
        delay = answer.Delay();
        return NewAnswer(call, answer);
    } catch (std::exception const& failure) {
        return NewAnswer(call, HandlerFailed(Printable(failure.what(), 500)));
    } catch (...) {
        return NewAnswer(call, HandlerFailed("an exception that is no std::exception"));
    }
}

void WirePeer::Impl::AnswerCall(DBusMessage* call, WireMessage const& decoded)
{
    std::chrono::milliseconds delay{0};
    std::shared_ptr<DBusMessage> const answer = MakeAnswer(call, decoded, delay);
    if (!answer || decoded.noReply) {
        return;
    }
    // After a disconnection no receiver is left.
    auto const send = [answer](DBusConnection* connection) { SendNow(connection, answer.get()); };
    if (delay.count() > 0) {
        m_loop.RunAfter(delay, send);
    } else {
        m_loop.Run(send);
    }
}

} // namespace zviptv::test
