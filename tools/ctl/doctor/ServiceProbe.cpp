// SPDX-License-Identifier: MIT
#include "doctor/ServiceProbe.h"

#include "doctor/Accounts.h"
#include "doctor/EndpointProbe.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/Protocol.h>

namespace zviptv::ctl::doctor {

namespace {

void LookUpOwner(BusProbe& bus, ServiceFacts& service)
{
    char const* const name = CConnectionHelperDBusClient::BUSNAME;
    Reply const owner = bus.CallBus("GetNameOwner", g_variant_new("(s)", name));
    if (owner.IsOf("(s)")) {
        char const* text = nullptr;
        g_variant_get(owner.body.get(), "(&s)", &text);
        service.owner = text;
        service.isOwned = g_dbus_is_unique_name(text) != FALSE;
    } else if (owner.error == "org.freedesktop.DBus.Error.NameHasNoOwner") {
        service.isOwned = false;
    }
}

void LookUpCredentials(BusProbe& bus, ServiceFacts& service)
{
    Reply const reply = bus.CallBus("GetConnectionCredentials", g_variant_new("(s)", service.owner.c_str()));
    if (!reply.IsOf("(a{sv})")) {
        return;
    }
    Owned<GVariant> const credentials(g_variant_get_child_value(reply.body.get(), 0));
    guint32 number = 0;
    if (g_variant_lookup(credentials.get(), "UnixUserID", "u", &number) != FALSE) {
        service.userId = number;
        service.userName = UserName(number);
    }
    if (g_variant_lookup(credentials.get(), "ProcessID", "u", &number) != FALSE) {
        service.process = number;
    }
}

/// Errors that the bus sends in place of an owner that has left.
bool IsGone(Reply const& reply)
{
    return reply.isFromBus && (reply.error == "org.freedesktop.DBus.Error.NoReply" ||
                               reply.error == "org.freedesktop.DBus.Error.ServiceUnknown" ||
                               reply.error == "org.freedesktop.DBus.Error.NameHasNoOwner");
}

Outcome OutcomeOf(Reply const& reply)
{
    switch (reply.kind) {
    case Reply::Kind::Answer:
        return reply.IsOf("(a(ss))") ? Outcome::Answered : Outcome::Unreadable;
    case Reply::Kind::Silence:
        return Outcome::Silent;
    case Reply::Kind::Error:
        break;
    }
    return reply.IsDenied() ? Outcome::Forbidden : IsGone(reply) ? Outcome::Gone : Outcome::Failed;
}

/// The first call announces the end of a channel that was never announced. GLib's own thread answers Ping,
/// Introspect, and calls with an unknown method or wrong arguments, even if the main loop of the process is
/// blocked; this call must reach the main loop. The service has nothing to do, and may answer anything.
void Ask(BusProbe& bus, ServiceFacts& service)
{
    Reply const reply = Announce(bus, service.owner, protocol::type::PlayerControl, "n");
    service.outcome = OutcomeOf(reply);
    if (service.outcome == Outcome::Unreadable) {
        service.error = std::string("an answer of the type ") + g_variant_get_type_string(reply.body.get());
    } else if (reply.kind == Reply::Kind::Error) {
        service.error = reply.ErrorText();
    }
    if (service.outcome == Outcome::Silent) {
        Reply const ping = bus.Call({service.owner, "/", "org.freedesktop.DBus.Peer", "Ping"}, nullptr);
        service.isConnectionAlive = ping.kind == Reply::Kind::Answer;
    }
}

} // namespace

void ProbeService(BusProbe& bus, ServiceFacts& service)
{
    LookUpOwner(bus, service);
    if (service.isOwned.value_or(false)) {
        LookUpCredentials(bus, service);
        Ask(bus, service);
    }
    if (service.outcome == Outcome::Answered) {
        service.endpoints = ProbeEndpoints(bus, service.owner);
    }
}

} // namespace zviptv::ctl::doctor
