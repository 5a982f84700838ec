// SPDX-License-Identifier: MIT
#include "ControlErrors.h"

#include "control/Link.h"

namespace zviptv::sim {

/// The service's errors have special D-Bus names; any other error means that it has died or hangs.
std::string ErrorText(GError const* error, pid_t service)
{
    if (g_dbus_error_is_remote_error(error) != FALSE) {
        GError* plain = g_error_copy(error);
        g_dbus_error_strip_remote_error(plain);
        std::string text = plain->message;
        g_error_free(plain);
        return text;
    }
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_NOT_CONNECTED) != FALSE) {
        return error->message;
    }
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE) {
        return "the service has not answered for " + std::to_string(AnswerLimit.count()) +
               " seconds; resume it with 'kill -CONT " + std::to_string(service) +
               "' if it is stopped, or replace it with 'zviptvctl sim restart'";
    }
    return "the service died before it answered; call again once it is back";
}

void ReturnError(GDBusMethodInvocation* invocation, char const* name, char const* text)
{
    g_dbus_method_invocation_return_dbus_error(invocation, name, text);
}

void AnswerError(GDBusMethodInvocation* invocation, GError const* error, pid_t service)
{
    Owned<char> const name(g_dbus_error_get_remote_error(error));
    bool const isLate = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE;
    ReturnError(invocation,
                name     ? name.get()
                : isLate ? link::TimedOut
                         : link::NotRunning,
                ErrorText(error, service).c_str());
}

void ReplyError(ServiceLink::Reply const& reply, char const* name, char const* text)
{
    GError* error = g_dbus_error_new_for_dbus_error(name, text);
    reply(nullptr, error);
    g_error_free(error);
}

} // namespace zviptv::sim
