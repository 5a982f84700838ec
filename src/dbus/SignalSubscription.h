// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <string>

namespace zviptv {

/// A subscription to signals of the bus. Ends with its destructor.
/// It sends its match rule itself. If GIO sends one at the moment when the connection closes, it logs a
/// critical, which ends a process that has made criticals fatal.
class SignalSubscription
{
public:
    /// The signals to subscribe to. An empty text matches anything; the others are valid names and paths.
    struct Match
    {
        std::string sender;
        std::string interface;
        std::string member;
        std::string path;
        std::string firstArgument;
        bool isUnicast = false; ///< sent only to this connection: the bus needs no match rule
    };

    SignalSubscription() = default;
    /// Signals are delivered through the main context that is the calling thread's default. `userData` is
    /// released with `release`, even on failure.
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
