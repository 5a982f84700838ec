// SPDX-License-Identifier: MIT
#include "dbus/SendFailure.h"

#include "failure/LastFailure.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace zviptv {

namespace {

constexpr char NotOnTheBus[] =
    "the service is not on the bus; start it, then destroy the object and create it again";

/// Sets the failure from an error with which the bus or the destination has answered.
void SetAnswered(GError const* answered)
{
    Owned<char> const name(g_dbus_error_get_remote_error(answered));
    Error text;
    GError** const place = text.Out();
    *place = g_error_copy(answered);
    g_dbus_error_strip_remote_error(*place);
    bool const isAbsent = std::strcmp(name.get(), "org.freedesktop.DBus.Error.ServiceUnknown") == 0 ||
                          std::strcmp(name.get(), "org.freedesktop.DBus.Error.NameHasNoOwner") == 0;
    SetFailure(isAbsent ? ZV_FAILURE_NO_SERVICE : ZV_FAILURE_BUS_ERROR,
               {isAbsent ? NotOnTheBus : text.Message()}, "", name.get());
}

} // namespace

void SetSendFailure(Error const& error, char const* what, int timeoutMs)
{
    int const defaultTimeoutMs = 25000;
    if (g_dbus_error_is_remote_error(error.Get()) != FALSE) {
        SetAnswered(error.Get());
    } else if (error.Is(G_IO_ERROR_TIMED_OUT)) {
        std::array<char, 16> waited{};
        std::snprintf(waited.data(), waited.size(), "%d", timeoutMs < 0 ? defaultTimeoutMs : timeoutMs);
        SetFailure(ZV_FAILURE_TIMED_OUT, {"no answer to ", what, " within ", waited.data(),
                                          " ms; check that the service does not hang and is not overloaded"});
    } else if (error.Is(G_IO_ERROR_MESSAGE_TOO_LARGE)) {
        SetFailure(ZV_FAILURE_TOO_LARGE, {what, " is larger than the bus carries (32 MiB); send less"});
    } else if (error.Is(G_IO_ERROR_INVALID_DATA) || error.Is(G_IO_ERROR_INVALID_ARGUMENT)) {
        SetFailure(ZV_FAILURE_INVALID_ARGUMENT, {what, " cannot be sent: ", error.Message()});
    } else if (error.Is(G_IO_ERROR_TOO_MANY_OPEN_FILES)) {
        SetShortage();
    } else if (error.Is(G_IO_ERROR_FAILED)) { // a GIO proxy of a well-known name without an owner
        SetFailure(ZV_FAILURE_NO_SERVICE, {NotOnTheBus});
    } else {
        SetFailure(ZV_FAILURE_NO_BUS, {"no connection to the bus: ", error.Message(),
                                       "; check that it runs, then destroy the object and create it again"});
    }
}

void SetConnectFailure(Error const& error)
{
    if (error.Is(G_IO_ERROR_TOO_MANY_OPEN_FILES)) {
        SetShortage();
    } else {
        SetFailure(ZV_FAILURE_NO_BUS,
                   {error.Message(), "; start the bus, or set DBUS_SYSTEM_BUS_ADDRESS to one that runs, then "
                                     "destroy the object and create it again"});
    }
}

void SetNoBus()
{
    SetFailureUnlessSet(ZV_FAILURE_NO_BUS,
                        {"the channel has no connection to the bus; create it again when the bus runs"});
}

void SetShortage()
{
    SetFailure(ZV_FAILURE_NO_BUS, {"too many open files; close some, or raise the limit (ulimit -n)"});
}

} // namespace zviptv
