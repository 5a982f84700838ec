// SPDX-License-Identifier: MIT
#include "Simulator.h"

#include "Variant.h"

#include <climits>

namespace zviptv::ctl {

namespace {

constexpr char OwnErrors[] = "org.corvel.zviptvapi.Simulator1.Error.";
constexpr int NoLimit = INT_MAX;
constexpr int StateLimit = 5000; // milliseconds; the simulator waits one second for its service

/// The exit code for an error of the control interface.
ExitCode CodeOf(std::string const& error)
{
    return error == "NotRunning" ? ExitCode::NoService
           : error == "TimedOut" ? ExitCode::NoAnswer
                                 : ExitCode::Refused;
}

/// The failure for an error of a call.
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
        return {ExitCode::NoAnswer, "the bus does not let this user control the simulator: run the command "
                                    "as root or as the simulator's user"};
    }
    if (name.rfind(OwnErrors, 0) == 0) {
        return {CodeOf(name.substr(sizeof OwnErrors - 1)), error->message};
    }
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE) {
        return {ExitCode::NoAnswer,
                "the simulator does not answer; check whether its process is stopped ('kill -CONT PID' "
                "resumes it), or start another one"};
    }
    if (name == "org.freedesktop.DBus.Error.NoReply" || name.empty()) {
        return {ExitCode::NoService, "the simulator left the bus before it answered"};
    }
    return {ExitCode::NoAnswer, std::string("the bus reported an error: ") + error->message};
}

/// @throws Failure
SystemBus Connect()
try {
    return {};
} catch (Failure const& failure) {
    throw Failure(failure.Code(),
                  std::string(failure.what()) +
                      "; 'zviptv-sim --ts FILE -- bash' starts a simulator with a private bus, "
                      "and a shell where zviptvctl finds it");
}

} // namespace

Failure NoSimulator()
{
    return {ExitCode::NoService,
            "no simulator runs on this bus; start one with 'zviptv-sim --ts FILE', and set "
            "DBUS_SYSTEM_BUS_ADDRESS to its bus"};
}

Simulator::Simulator() : m_bus(Connect()) {}

Owned<GVariant> Simulator::Call(char const* interface, char const* method, GVariant* parameters,
                                int milliseconds) const
{
    GError* error = nullptr;
    Owned<GVariant> answer(g_dbus_connection_call_sync(
        Connection(), verbs::BusName, verbs::ObjectPath, interface, method, parameters, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, milliseconds, nullptr, &error));
    if (error != nullptr) {
        Failure const failure = ToFailure(error);
        g_error_free(error);
        throw Failure(failure);
    }
    return answer;
}

void Simulator::Call(verbs::Command const& command) const
{
    Call(verbs::Interface, command.verb->method, command.parameters.get(), NoLimit);
}

Json::Value Simulator::State() const
{
    Owned<GVariant> const answer =
        Call("org.freedesktop.DBus.Properties", "GetAll", g_variant_new("(s)", verbs::Interface), StateLimit);
    Owned<GVariant> const properties(g_variant_get_child_value(answer.get(), 0));
    return ToJson(properties.get());
}

} // namespace zviptv::ctl
