// SPDX-License-Identifier: MIT
#include "WirePeer.h"

#include "PeerConnection.h"
#include "WireSend.h"

#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace zviptv::test {

namespace {

std::string AddressFromEnvironment()
{
    char const* const address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    if (address == nullptr) {
        throw std::runtime_error("DBUS_SYSTEM_BUS_ADDRESS is not set: no private bus");
    }
    return address;
}

WireTarget Daemon(char const* member)
{
    return {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member};
}

/// A body of one "s" and one "u", for RequestName.
WireBody NameAndFlags(std::string const& name, std::uint32_t flags)
{
    return WireBody::Raw([name, flags](DBusMessageIter* iter) {
        char const* text = name.c_str();
        dbus_message_iter_append_basic(iter, 's', &text);
        dbus_message_iter_append_basic(iter, 'u', &flags);
    });
}

WireMessage Succeeded(WireMessage reply)
{
    if (reply.kind != WireKind::Reply) {
        throw std::runtime_error("the bus refused: " + reply.errorName + " " +
                                 (reply.strings.empty() ? std::string() : reply.strings.front()));
    }
    return reply;
}

} // namespace

WirePeer::WirePeer(std::string const& address) : m_impl(std::make_unique<Impl>(address)) {}

WirePeer::WirePeer() : WirePeer(AddressFromEnvironment()) {}

WirePeer::~WirePeer() = default;

std::string const& WirePeer::Name() const
{
    return m_impl->Name();
}

bool WirePeer::OwnName(std::string const& name, std::uint32_t flags)
{
    Succeeded(Call(Daemon("RequestName"), NameAndFlags(name, flags)));
    return GetNameOwner(name) == Name();
}

bool WirePeer::ReleaseName(std::string const& name)
{
    bool const owned = GetNameOwner(name) == Name();
    Succeeded(Call(Daemon("ReleaseName"), WireBody::Strings({name})));
    return owned;
}

WireMessage WirePeer::Call(WireTarget const& target, WireBody const& body, CallOptions const& options)
{
    return m_impl->Call(target, body, options);
}

std::uint32_t WirePeer::CallWithoutReply(WireTarget const& target, WireBody const& body)
{
    return m_impl->Send(NewCall(target, body, false, true), 1);
}

std::uint32_t WirePeer::Emit(WireTarget const& target, WireBody const& body)
{
    return m_impl->Send(NewSignal(target, body), 1);
}

void WirePeer::EmitMany(WireTarget const& target, WireBody const& body, std::size_t count)
{
    m_impl->Send(NewSignal(target, body), count);
}

void WirePeer::Sync()
{
    Succeeded(Call(Daemon("GetId")));
}

void WirePeer::SetHandler(CallHandler handler)
{
    m_impl->SetHandler(std::move(handler));
}

void WirePeer::SetRecording(bool on)
{
    m_impl->SetRecording(on);
}

MessageLog& WirePeer::Received()
{
    return m_impl->received;
}

std::optional<WireMessage> WirePeer::WaitFor(MessagePredicate const& predicate,
                                             std::chrono::milliseconds timeout)
{
    return m_impl->received.WaitFor(predicate, timeout);
}

void WirePeer::AddMatch(std::string const& rule)
{
    Succeeded(Call(Daemon("AddMatch"), WireBody::Strings({rule})));
}

void WirePeer::RemoveMatch(std::string const& rule)
{
    Succeeded(Call(Daemon("RemoveMatch"), WireBody::Strings({rule})));
}

std::vector<std::string> WirePeer::ListNames()
{
    return Succeeded(Call(Daemon("ListNames"))).strings;
}

std::string WirePeer::GetNameOwner(std::string const& name)
{
    auto const reply = Call(Daemon("GetNameOwner"), WireBody::Strings({name}));
    if (reply.kind == WireKind::Error && reply.errorName == "org.freedesktop.DBus.Error.NameHasNoOwner") {
        return {};
    }
    return Succeeded(reply).strings.at(0);
}

bool WirePeer::WaitForOwner(std::string const& name, bool owned, std::chrono::milliseconds timeout)
{
    auto const rule = "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
                      "member='NameOwnerChanged',arg0='" +
                      name + "'";
    auto const from = m_impl->busNotices.Size();
    AddMatch(rule);
    bool reached = GetNameOwner(name).empty() != owned;
    if (!reached) {
        auto const changed = [&](WireMessage const& message) {
            return message.member == "NameOwnerChanged" && message.strings.size() == 3 &&
                   message.strings[0] == name && message.strings[2].empty() != owned;
        };
        reached = m_impl->busNotices.WaitFor(changed, timeout, from).has_value();
    }
    RemoveMatch(rule);
    return reached;
}

void WirePeer::Disconnect()
{
    m_impl->Disconnect();
}

bool WirePeer::IsConnected()
{
    return m_impl->IsConnected();
}

bool WirePeer::WaitDisconnected(std::chrono::milliseconds timeout)
{
    auto const isEnd = [](WireMessage const& message) {
        return message.member == "Disconnected" && message.interface == "org.freedesktop.DBus.Local";
    };
    return m_impl->busNotices.WaitFor(isEnd, timeout).has_value();
}

} // namespace zviptv::test
