// SPDX-License-Identifier: MIT
#include "WireSend.h"

#include <new>
#include <stdexcept>

namespace zviptv::test {

namespace {

using Validator = dbus_bool_t (*)(char const*, DBusError*);

void Check(Validator validate, std::string const& name, char const* what)
{
    if (name.find('\0') != std::string::npos || validate(name.c_str(), nullptr) == 0) {
        throw std::invalid_argument(std::string("invalid ") + what + ": " + Printable(name));
    }
}

void CheckTarget(WireTarget const& target)
{
    if (!target.destination.empty()) {
        Check(dbus_validate_bus_name, target.destination, "bus name");
    }
    Check(dbus_validate_path, target.path, "object path");
    Check(dbus_validate_member, target.member, "member");
}

char const* OrNull(std::string const& text)
{
    return text.empty() ? nullptr : text.c_str();
}

MessageHandle Checked(DBusMessage* message)
{
    if (message == nullptr) {
        throw std::bad_alloc();
    }
    return MessageHandle(message);
}

} // namespace

MessageHandle NewCall(WireTarget const& target, WireBody const& body, bool noAutoStart, bool noReply)
{
    CheckTarget(target);
    if (!target.interface.empty()) {
        Check(dbus_validate_interface, target.interface, "interface");
    }
    auto call = Checked(dbus_message_new_method_call(OrNull(target.destination), target.path.c_str(),
                                                     OrNull(target.interface), target.member.c_str()));
    dbus_message_set_auto_start(call.get(), noAutoStart ? FALSE : TRUE);
    dbus_message_set_no_reply(call.get(), noReply ? TRUE : FALSE);
    body.AppendTo(call.get());
    return call;
}

MessageHandle NewSignal(WireTarget const& target, WireBody const& body)
{
    CheckTarget(target);
    Check(dbus_validate_interface, target.interface, "interface");
    auto signal = Checked(
        dbus_message_new_signal(target.path.c_str(), target.interface.c_str(), target.member.c_str()));
    if (dbus_message_set_destination(signal.get(), OrNull(target.destination)) == 0) {
        throw std::bad_alloc();
    }
    body.AppendTo(signal.get());
    return signal;
}

MessageHandle NewAnswer(DBusMessage* call, WireAnswer const& answer)
{
    if (answer.GetKind() == WireAnswer::Kind::Nothing) {
        return nullptr;
    }
    if (answer.GetKind() == WireAnswer::Kind::Error) {
        Check(dbus_validate_error_name, answer.ErrorName(), "error name");
        Check(dbus_validate_utf8, answer.ErrorText(), "error text");
        return Checked(dbus_message_new_error(call, answer.ErrorName().c_str(), answer.ErrorText().c_str()));
    }
    auto reply = Checked(dbus_message_new_method_return(call));
    answer.Body().AppendTo(reply.get());
    return reply;
}

std::uint32_t SendNow(DBusConnection* connection, DBusMessage* message)
{
    if (dbus_connection_get_is_connected(connection) == 0) {
        return 0;
    }
    dbus_uint32_t serial = 0;
    if (dbus_connection_send(connection, message, &serial) == 0) {
        throw std::bad_alloc();
    }
    return serial;
}

} // namespace zviptv::test
