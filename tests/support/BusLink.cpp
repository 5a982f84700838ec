// SPDX-License-Identifier: MIT
#include "BusLink.h"

#include <cstdlib>
#include <stdexcept>

namespace zviptv::test {

BusLink::BusLink()
{
    ErrorHandle error;
    char const* const address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    m_connection.reset(dbus_connection_open_private(address == nullptr ? "" : address, error.Get()));
    if (m_connection == nullptr || dbus_bus_register(m_connection.get(), error.Get()) == 0) {
        throw std::runtime_error(error.Text());
    }
}

void BusLink::Flush()
{
    dbus_connection_flush(m_connection.get());
    dbus_connection_read_write(m_connection.get(), 0);
    while (MessageHandle const dropped{dbus_connection_pop_message(m_connection.get())}) {
    }
}

void BusLink::Sync()
{
    ErrorHandle error;
    MessageHandle const question(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "GetId"));
    MessageHandle const answer(
        dbus_connection_send_with_reply_and_block(m_connection.get(), question.get(), 20000, error.Get()));
    if (answer == nullptr) {
        throw std::runtime_error(error.Text());
    }
}

} // namespace zviptv::test
