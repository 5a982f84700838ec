// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <string>

namespace zviptv {

/// A subscription to signals of the bus; ends with its owner.
///
/// It sends its match rule itself. GIO writes a critical, which ends a process that has made these fatal,
/// when the connection closes at the moment in which GIO sends one.
class SignalSubscription
{
public:
    /// What the signals have. Empty texts stand for anything; the others are valid names and paths.
    struct Match
    {
        std::string sender;
        std::string interface;
        std::string member;
        std::string path;
        std::string firstArgument;
        bool isUnicast = false; ///< sent to this connection alone: the bus needs no match rule
    };

    SignalSubscription() = default;
    /// Signals come through the main context that is the calling thread's default. `userData` is released
    /// with `release`, also on failure.
    SignalSubscription(GDBusConnection* connection, Match const& match, GDBusSignalCallback callback,
                       void* userData, GDestroyNotify release);
    SignalSubscription(SignalSubscription&& other) noexcept;
    SignalSubscription& operator=(SignalSubscription&& other) noexcept;
    ~SignalSubscription();

    guint Id() const { return m_id; }

private:
    Owned<GDBusConnection> m_connection;
    std::string m_rule;
    guint m_id = 0;
};

} // namespace zviptv
