// SPDX-License-Identifier: MIT
#include "BusMonitor.h"

#include "BusLoop.h"
#include "WireCodec.h"

#include <stdexcept>

namespace zviptv::test {

namespace {

MessageHandle BecomeMonitorCall(std::vector<std::string> const& rules)
{
    MessageHandle call(dbus_message_new_method_call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                    "org.freedesktop.DBus.Monitoring", "BecomeMonitor"));
    DBusMessageIter iter;
    DBusMessageIter array;
    dbus_message_iter_init_append(call.get(), &iter);
    dbus_message_iter_open_container(&iter, type::Array, "s", &array);
    for (auto const& rule : rules) {
        char const* text = rule.c_str();
        dbus_message_iter_append_basic(&array, type::String, &text);
    }
    dbus_message_iter_close_container(&iter, &array);
    dbus_uint32_t const flags = 0;
    dbus_message_iter_append_basic(&iter, type::Uint32, &flags);
    return call;
}

} // namespace

class BusMonitor::Impl
{
public:
    Impl(std::string const& address, std::vector<std::string> const& rules) : m_loop(address)
    {
        // The daemon disconnects a monitor that sends anything, so libdbus must not answer pings.
        dbus_connection_set_route_peer_messages(m_loop.Connection(), TRUE);
        ErrorHandle error;
        MessageHandle const reply(
            dbus_connection_send_with_reply_and_block(m_loop.Connection(), BecomeMonitorCall(rules).get(),
                                                      static_cast<int>(patience.count()), error.Get()));
        if (!reply) {
            throw std::runtime_error(std::string("cannot monitor the bus: ") + error.Text());
        }
        m_loop.Start([this](DBusMessage* message) { seen.Add(DecodeMessage(message)); });
    }

    MessageLog seen;

private:
    BusLoop m_loop;
};

BusMonitor::BusMonitor(std::string const& address, std::vector<std::string> const& rules)
    : m_impl(std::make_unique<Impl>(address, rules))
{
}

BusMonitor::~BusMonitor() = default;

MessageLog& BusMonitor::Seen()
{
    return m_impl->seen;
}

std::optional<WireMessage> BusMonitor::WaitFor(MessagePredicate const& predicate,
                                               std::chrono::milliseconds timeout)
{
    return m_impl->seen.WaitFor(predicate, timeout);
}

} // namespace zviptv::test
