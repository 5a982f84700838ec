// SPDX-License-Identifier: MIT
#include "Service.h"

#include "LibdbusBody.h"

#include <stdexcept>

namespace zviptv::bench {

namespace {

using Message = LibdbusOwned<DBusMessage>;

struct Request
{
    std::string_view function;
    std::string_view on;
};

Request Read(DBusMessage* call)
{
    Request request;
    ForEachEntry(call, [&request](std::string_view key, std::string_view value) {
        if (key == "functionname") {
            request.function = value;
        } else if (key == "on") {
            request.on = value;
        }
    });
    return request;
}

RequestEntries ReadAll(DBusMessage* call)
{
    RequestEntries entries;
    ForEachEntry(call, [&entries](char const* key, std::string_view value) { entries.emplace(key, value); });
    return entries;
}

LibdbusOwned<DBusConnection> Connect()
{
    LibdbusError error;
    LibdbusOwned<DBusConnection> connection(dbus_bus_get(DBUS_BUS_SYSTEM, error.Out()));
    if (connection == nullptr) {
        throw std::runtime_error(error.Text());
    }
    if (dbus_bus_request_name(connection.get(), wire::HelperName, DBUS_NAME_FLAG_DO_NOT_QUEUE, error.Out()) !=
        DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER) {
        throw std::runtime_error("the name of the helper bus already has an owner");
    }
    return connection;
}

} // namespace

Service::Service() : m_connection(Connect())
{
    for (int i = 0; i < wire::Ratings; ++i) {
        m_ratings.insert(m_ratings.end(), {0, 0, static_cast<char>(i)});
    }
    dbus_connection_add_filter(m_connection.get(), OnMessage, this, nullptr);
}

Service::~Service()
{
    dbus_connection_remove_filter(m_connection.get(), OnMessage, this);
}

int Service::Descriptor() const
{
    int descriptor = -1;
    dbus_connection_get_unix_fd(m_connection.get(), &descriptor);
    return descriptor;
}

bool Service::WantsToWrite() const
{
    return dbus_connection_has_messages_to_send(m_connection.get()) != FALSE;
}

void Service::Work()
{
    if (dbus_connection_read_write(m_connection.get(), 0) == FALSE) {
        throw std::runtime_error("the connection to the bus is closed");
    }
    while (dbus_connection_dispatch(m_connection.get()) == DBUS_DISPATCH_DATA_REMAINS) {
    }
    while (m_sent < m_count && m_onTheirWay < 2 * m_batch * m_subscribers.size() && !WantsToWrite()) {
        for (std::string const& subscriber : m_subscribers) {
            PushOne(subscriber);
        }
        ++m_sent;
    }
}

DBusHandlerResult Service::OnMessage(DBusConnection* /*connection*/, DBusMessage* message, void* self)
{
    auto* const service = static_cast<Service*>(self);
    if (dbus_message_is_method_call(message, wire::HelperInterface, wire::Signal) != FALSE) {
        service->AnswerHelper(message);
    } else if (dbus_message_is_method_call(message, wire::Interface, wire::Method) != FALSE) {
        service->AnswerRequest(message);
    } else {
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    }
    return DBUS_HANDLER_RESULT_HANDLED;
}

void Service::Send(DBusMessage* message)
{
    dbus_connection_send(m_connection.get(), message, nullptr);
}

void Service::AnswerHelper(DBusMessage* call)
{
    Message const answer(dbus_message_new_method_return(call));
    DBusMessageIter body;
    DBusMessageIter array;
    DBusMessageIter pair;
    char const* const key = "dbusname";
    char const* const name = dbus_bus_get_unique_name(m_connection.get());
    dbus_message_iter_init_append(answer.get(), &body);
    dbus_message_iter_open_container(&body, DBUS_TYPE_ARRAY, "(ss)", &array);
    dbus_message_iter_open_container(&array, DBUS_TYPE_STRUCT, nullptr, &pair);
    dbus_message_iter_append_basic(&pair, DBUS_TYPE_STRING, &key);
    dbus_message_iter_append_basic(&pair, DBUS_TYPE_STRING, &name);
    dbus_message_iter_close_container(&array, &pair);
    dbus_message_iter_close_container(&body, &array);
    Send(answer.get());
}

void Service::AnswerRequest(DBusMessage* call)
{
    Request const request = Read(call);
    std::string const sender = dbus_message_get_sender(call);
    Message const answer(dbus_message_new_method_return(call));
    bool const isAccepted = m_checks.Accept(sender, request.function, dbus_message_get_path(call),
                                            [call] { return ReadAll(call); });
    if (!isAccepted) {
        AppendEntries(answer.get(), {{"result_internal", "0"}});
    } else if (request.function == "GetRatingInfo") {
        AppendEntries(answer.get(), {{"result_internal", "1"},
                                     {"ratingInfoSize", std::to_string(wire::Ratings)},
                                     {"ratingInfo", {m_ratings.data(), m_ratings.size()}}});
    } else if (request.function == "ExistXmlForIPG") {
        AppendEntries(answer.get(), {{"result_internal", "1"}, {"data", "1"}});
    } else {
        AppendEntries(answer.get(), {{"result_internal", "1"}});
    }
    if (isAccepted && request.function == "requestPESCB") {
        Register(sender, request.on == "1");
    }
    Send(answer.get());
}

void Service::Register(std::string const& sender, bool subscribes)
{
    if (subscribes) {
        m_subscribers.insert(sender);
    } else {
        m_subscribers.erase(sender);
    }
}

void Service::Push(std::size_t count, std::size_t size, std::size_t batch)
{
    bool const isPushing = m_sent < m_count;
    if (m_subscribers.empty() || isPushing) {
        throw std::runtime_error(isPushing ? "a push is not finished" : "there are no subscribers");
    }
    m_packet.resize(size);
    for (std::size_t i = 0; i < size; ++i) {
        m_packet[i] = wire::ByteOf(0, i, size);
    }
    m_sent = 0;
    m_count = count;
    m_batch = batch;
    m_onTheirWay = 0;
}

void Service::Credit(std::size_t batches)
{
    m_onTheirWay -= batches * m_batch;
}

// The number of the packet is its time stamp.
void Service::PushOne(std::string const& subscriber)
{
    m_packet.front() = m_packet.back() = wire::ByteOf(m_sent, 0, m_packet.size());
    std::string const size = std::to_string(m_packet.size());
    std::string const pts = std::to_string((std::uint64_t{1} << 32) + m_sent);
    Message const signal(dbus_message_new_signal(wire::SubscriberPath, wire::Interface, wire::Signal));
    dbus_message_set_destination(signal.get(), subscriber.c_str());
    AppendEntries(signal.get(), {{"functionname", "PESCB"},
                                 {"pesDataSize", size},
                                 {"pesType", "1"},
                                 {"pesPID", "256"},
                                 {"pesPTS", pts},
                                 {"pesData", m_packet}});
    Send(signal.get());
    ++m_onTheirWay;
}

} // namespace zviptv::bench
