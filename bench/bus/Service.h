// SPDX-License-Identifier: MIT
#pragma once

#include "Checks.h"
#include "LibdbusBody.h"

#include <dbus/dbus.h>

#include <set>
#include <string>
#include <vector>

namespace zviptv::bench {

/// A minimal service on libdbus: answers at once, and pushes packets to subscribers within the limit of their
/// credit.
class Service
{
public:
    /// Acquires the name of the helper bus. Throws std::runtime_error.
    Service();
    ~Service();
    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;

    std::string Name() const { return dbus_bus_get_unique_name(m_connection.get()); }
    int Descriptor() const;
    bool WantsToWrite() const;
    /// Reads, answers, writes, and pushes within the credit.
    void Work();

    /// Starts to push `count` packets of `size` bytes to every subscriber, on average with at most two
    /// outstanding batches for each.
    void Push(std::size_t count, std::size_t size, std::size_t batch);
    std::size_t Subscribers() const { return m_subscribers.size(); }
    /// Reports that the given number of subscribers have each received a batch.
    void Credit(std::size_t batches);

private:
    static DBusHandlerResult OnMessage(DBusConnection* connection, DBusMessage* message, void* self);

    void Send(DBusMessage* message);
    void AnswerHelper(DBusMessage* call);
    void AnswerRequest(DBusMessage* call);
    void Register(std::string const& sender, bool subscribes);
    void PushOne(std::string const& subscriber);

    LibdbusOwned<DBusConnection> const m_connection;
    Checks m_checks;
    std::set<std::string> m_subscribers;
    std::vector<char> m_ratings;
    std::string m_packet;
    std::size_t m_sent = 0;
    std::size_t m_count = 0;
    std::size_t m_batch = 1;
    std::size_t m_onTheirWay = 0;
};

} // namespace zviptv::bench
