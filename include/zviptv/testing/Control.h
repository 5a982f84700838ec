// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/testing/Conversation.h>
#include <zviptv/testing/Variants.h>

#include <cstring>
#include <string_view>

namespace zviptv::simulated {

/// The simulator cannot be started, does not answer, or has refused a verb. The text says why.
class TelevisionError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The simulator does not answer.
class NoAnswer : public TelevisionError
{
public:
    using TelevisionError::TelevisionError;
};

/// The simulator's control interface: calls its methods, and writes its signals into a conversation.
class Control
{
public:
    /// @throws TelevisionError if the bus or the simulator cannot be reached
    Control(std::string const& address, std::shared_ptr<Conversation> const& conversation)
    {
        GError* error = nullptr;
        m_connection.reset(g_dbus_connection_new_for_address_sync(
            address.c_str(),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, &error));
        Check(error);
        m_filter = g_dbus_connection_add_filter(
            m_connection.get(), OnMessage, new std::shared_ptr<Conversation>(conversation),
            [](gpointer data) { delete static_cast<std::shared_ptr<Conversation>*>(data); });
        std::string const rule = std::string("type='signal',sender='") + BusName + "',path='" + Path + "'";
        CallOn("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "AddMatch",
               {NewVariant(rule)}, Seconds(CallTimeout));
    }
    ~Control()
    {
        if (m_filter != 0) {
            g_dbus_connection_remove_filter(m_connection.get(), m_filter);
        }
    }
    Control(Control const&) = delete;
    Control& operator=(Control const&) = delete;

    /// Calls a method and returns its results, a tuple. All signals that came before the answer are in the
    /// conversation then. @throws TelevisionError
    Handle<GVariant> Call(char const* method, Variants values, Seconds timeout = Seconds(CallTimeout))
    {
        return CallOn(BusName, Path, Interface, method, values, timeout);
    }

    /// All properties, an a{sv}. All requests that were answered before are in the conversation then.
    Handle<GVariant> Properties()
    {
        Handle<GVariant> const result = CallOn(BusName, Path, "org.freedesktop.DBus.Properties", "GetAll",
                                               {NewVariant(Interface)}, Seconds(CallTimeout));
        return Handle<GVariant>(g_variant_get_child_value(result.get(), 0));
    }

private:
    static constexpr char BusName[] = "org.corvel.zviptvapi.Simulator";
    static constexpr char Path[] = "/org/corvel/zviptvapi/Simulator";
    static constexpr char Interface[] = "org.corvel.zviptvapi.Simulator1";
    static constexpr int CallTimeout = 20; ///< seconds; the simulator itself answers within 15

    Handle<GVariant> CallOn(char const* name, char const* path, char const* interface, char const* method,
                            Variants values, Seconds timeout)
    {
        GError* error = nullptr;
        auto const limit = std::chrono::duration_cast<std::chrono::milliseconds>(timeout);
        Handle<GVariant> result(g_dbus_connection_call_sync(
            m_connection.get(), name, path, interface, method, NewTuple(values), nullptr,
            G_DBUS_CALL_FLAGS_NO_AUTO_START, static_cast<int>(limit.count()), nullptr, &error));
        Check(error);
        return result;
    }

    static void Check(GError* failure)
    {
        if (failure == nullptr) {
            return;
        }
        Handle<GError> const error(failure);
        Handle<char> const name(g_dbus_error_get_remote_error(failure));
        g_dbus_error_strip_remote_error(failure);
        if (name && std::strncmp(name.get(), Interface, std::strlen(Interface)) == 0) {
            throw TelevisionError(failure->message);
        }
        throw NoAnswer(std::string("zviptv-sim does not answer: ") + failure->message);
    }

    /// Runs on GIO's thread, in the order of the messages.
    static GDBusMessage* OnMessage(GDBusConnection* /*connection*/, GDBusMessage* message,
                                   gboolean isIncoming, gpointer data)
    {
        if (isIncoming != FALSE && g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_SIGNAL &&
            g_strcmp0(g_dbus_message_get_path(message), Path) == 0) {
            Conversation& conversation = **static_cast<std::shared_ptr<Conversation>*>(data);
            std::string_view const name = g_dbus_message_get_member(message);
            GVariant* const body = g_dbus_message_get_body(message);
            if (name == "Request" && g_variant_is_of_type(body, G_VARIANT_TYPE("(sssa{ss}is)")) != FALSE) {
                conversation.Add(ReadRequest(body));
            } else if (name == "Died" || name == "Restarted") {
                conversation.Note("television",
                                  name == "Died" ? "the service has died" : "the service is back");
            } else if (name == "PropertiesChanged") {
                Handle<GVariant> const changed(g_variant_get_child_value(body, 1));
                char const* step = nullptr;
                if (g_variant_lookup(changed.get(), "ScenarioStep", "&s", &step) != FALSE) {
                    conversation.Note("scenario", std::string("runs ") + step);
                }
            }
        }
        return message;
    }

    static Request ReadRequest(GVariant* body)
    {
        char const* application = nullptr;
        char const* endpoint = nullptr;
        char const* function = nullptr;
        char const* fault = nullptr;
        GVariantIter* arguments = nullptr;
        gint32 result = 0;
        g_variant_get(body, "(&s&s&sa{ss}i&s)", &application, &endpoint, &function, &arguments, &result,
                      &fault);
        Request request{function, {}, application, endpoint, {}, fault, 0};
        if (result != -1) {
            request.result = result;
        }
        char const* key = nullptr;
        char const* value = nullptr;
        while (g_variant_iter_next(arguments, "{&s&s}", &key, &value) != FALSE) {
            if (std::strcmp(key, "handleID") != 0) { // names the playback, and is not an argument
                request.arguments[key] = value;
            }
        }
        g_variant_iter_free(arguments);
        return request;
    }

    Handle<GDBusConnection> m_connection;
    guint m_filter = 0;
};

} // namespace zviptv::simulated
