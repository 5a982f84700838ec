// SPDX-License-Identifier: MIT
#pragma once

#include "Checks.h"
#include "LibdbusBody.h"

#include <dbus/dbus.h>

#include <set>
#include <string>
#include <vector>

namespace zviptv::bench {

/// The service at its fastest, on libdbus alone: answers, and pushes packets to whoever has asked for them,
/// no further ahead than their credit goes.
class Service
{
public:
    /// Owns the helper bus's name. Throws std::runtime_error.
    Service();
    ~Service();
    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;

    std::string Name() const { return dbus_bus_get_unique_name(m_connection.get()); }
    int Descriptor() const;
    bool WantsToWrite() const;
    /// Reads, answers, writes, and pushes what may be pushed.
    void Work();

    /// To every subscriber `count` packets of `size` bytes; on average never more than two batches on their
    /// way to each.
    void Push(std::size_t count, std::size_t size, std::size_t batch);
    /// So many subscribers have each received a batch.
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
