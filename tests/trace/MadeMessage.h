// SPDX-License-Identifier: MIT
#pragma once

#include "Handles.h"
#include "WireBody.h"
#include "trace/Message.h"

#include <dbus/dbus.h>

#include <stdexcept>
#include <string>

namespace zviptv::test {

/// Messages that libdbus has built, so that the code that reads them shares nothing with the code that
/// wrote them.
struct MadeMessage
{
    int type = DBUS_MESSAGE_TYPE_METHOD_CALL;
    std::string sender;
    std::string destination;
    std::string path;
    std::string interface;
    std::string member;
    std::string errorName;
    std::uint32_t serial = 1;
    std::uint32_t replySerial = 0;
    bool wantsReply = true;
    WireBody body;

    std::string Bytes() const
    {
        MessageHandle const message(dbus_message_new(type));
        DBusMessage* const raw = message.get();
        Set(dbus_message_set_sender, raw, sender);
        Set(dbus_message_set_destination, raw, destination);
        Set(dbus_message_set_path, raw, path);
        Set(dbus_message_set_interface, raw, interface);
        Set(dbus_message_set_member, raw, member);
        Set(dbus_message_set_error_name, raw, errorName);
        dbus_message_set_serial(raw, serial);
        if (replySerial != 0) {
            dbus_message_set_reply_serial(raw, replySerial);
        }
        dbus_message_set_no_reply(raw, wantsReply ? 0 : 1);
        body.AppendTo(raw);
        char* bytes = nullptr;
        int size = 0;
        if (dbus_message_marshal(raw, &bytes, &size) == 0) {
            throw std::runtime_error("libdbus does not write the message");
        }
        std::string const copy(bytes, static_cast<std::size_t>(size));
        dbus_free(bytes);
        return copy;
    }

    trace::Message At(std::int64_t time) const { return {time, Bytes()}; }

private:
    static void Set(dbus_bool_t (*set)(DBusMessage*, char const*), DBusMessage* message,
                    std::string const& text)
    {
        if (!text.empty()) {
            set(message, text.c_str());
        }
    }
};

/// A request from :1.5 to the service, :1.2.
inline MadeMessage MadeRequest(std::string const& endpoint, std::uint32_t serial, WireBody body)
{
    MadeMessage message;
    message.sender = ":1.5";
    message.destination = ":1.2";
    message.path = "/org/corvel/zviptvapi/DbusCommunication/" + endpoint;
    message.interface = "org.corvel.zviptvapi.DbusCommunication";
    message.member = "Send";
    message.serial = serial;
    message.body = std::move(body);
    return message;
}

/// The reply from :1.2 to :1.5.
inline MadeMessage MadeReply(std::uint32_t replySerial, WireBody body)
{
    MadeMessage message;
    message.type = DBUS_MESSAGE_TYPE_METHOD_RETURN;
    message.sender = ":1.2";
    message.destination = ":1.5";
    message.serial = 1000 + replySerial;
    message.replySerial = replySerial;
    message.body = std::move(body);
    return message;
}

/// A notification from :1.2 to :1.5.
inline MadeMessage MadeNotification(WireBody body)
{
    MadeMessage message = MadeRequest("IPTVDATASUBSCRIBER", 77, std::move(body));
    message.type = DBUS_MESSAGE_TYPE_SIGNAL;
    message.sender = ":1.2";
    message.destination = ":1.5";
    message.member = "SendSignal";
    message.wantsReply = false;
    return message;
}

/// A signal of the bus about a name.
inline MadeMessage MadeOwnerChange(std::string const& name, std::string const& former,
                                   std::string const& owner)
{
    MadeMessage message;
    message.type = DBUS_MESSAGE_TYPE_SIGNAL;
    message.sender = "org.freedesktop.DBus";
    message.path = "/org/freedesktop/DBus";
    message.interface = "org.freedesktop.DBus";
    message.member = "NameOwnerChanged";
    message.body = WireBody::Strings({name, former, owner});
    return message;
}

} // namespace zviptv::test
