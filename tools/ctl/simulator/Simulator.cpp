// SPDX-License-Identifier: MIT
#include "Simulator.h"

#include "Variant.h"

#include <climits>

namespace zviptv::ctl {

namespace {

constexpr char OwnErrors[] = "org.corvel.zviptvapi.Simulator1.Error.";
constexpr char Dead[] = "NotRunning";

/// What an error of a call means.
Failure ToFailure(GError* error)
{
    Owned<char> const text(g_dbus_error_get_remote_error(error));
    std::string const name = text ? text.get() : "";
    if (name == "org.freedesktop.DBus.Error.ServiceUnknown" ||
        name == "org.freedesktop.DBus.Error.NameHasNoOwner") {
        return NoSimulator();
    }
    g_dbus_error_strip_remote_error(error);
    if (name == "org.freedesktop.DBus.Error.AccessDenied") {
        return {ExitCode::NoAnswer,
                "the bus does not let this user steer the simulator: be root, or the simulator's user"};
    }
    if (name.rfind(OwnErrors, 0) == 0) {
        bool const isDead = name == std::string(OwnErrors) + Dead;
        return {isDead ? ExitCode::NoService : ExitCode::Refused, error->message};
    }
    if (name == "org.freedesktop.DBus.Error.NoReply" || name.empty()) {
        return {ExitCode::NoService, "the simulator went away before it answered"};
    }
    return {ExitCode::NoAnswer, std::string("the bus reported an error: ") + error->message};
}

} // namespace

Failure NoSimulator()
{
    return {ExitCode::NoService,
            "no simulator runs on this bus; start one with 'zviptv-sim --ts FILE', and its "
            "bus as DBUS_SYSTEM_BUS_ADDRESS"};
}

Owned<GVariant> Simulator::Call(char const* interface, char const* method, GVariant* parameters) const
{
    GError* error = nullptr;
    Owned<GVariant> answer(g_dbus_connection_call_sync(
        Connection(), verbs::BusName, verbs::ObjectPath, interface, method, parameters, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, INT_MAX, nullptr, &error));
    if (error != nullptr) {
        Failure const failure = ToFailure(error);
        g_error_free(error);
        throw Failure(failure);
    }
    return answer;
}

void Simulator::Call(verbs::Command const& command) const
{
    Call(verbs::Interface, command.verb->method, command.parameters.get());
}

Json::Value Simulator::State() const
{
    Owned<GVariant> const answer =
        Call("org.freedesktop.DBus.Properties", "GetAll", g_variant_new("(s)", verbs::Interface));
    Owned<GVariant> const properties(g_variant_get_child_value(answer.get(), 0));
    return ToJson(properties.get());
}

} // namespace zviptv::ctl
