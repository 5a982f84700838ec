// SPDX-License-Identifier: MIT
#pragma once

#include "Values.h"

#include <json/value.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zviptv::trace {

/// A connection to the bus that uses the service, with the data known at the time of an event.
struct Application
{
    std::string busName;            ///< unique name, as ":1.42"
    std::string name;               ///< name that it has set with SetAppID
    int processId = 0;              ///< 0 if unknown
    std::string program;            ///< program of the process; empty if unknown
    std::set<std::string> channels; ///< type words that it has announced
};

enum class EventKind
{
    Request,
    Reply,
    Error, ///< a D-Bus error instead of a reply
    Notification,
    Announcement, ///< of a channel, to the helper bus
    Answer,       ///< to an announcement
    Loss,         ///< an application has left the bus, or the service has lost its name
    Arrival       ///< the service has taken its name
};

/// A message of the protocol, or a message of the bus about the participants.
struct Event
{
    EventKind kind = EventKind::Request;
    std::uint64_t number = 0; ///< number of the message in the recording, from 1
    std::int64_t time = 0;    ///< microseconds since 1970, UTC

    /// Null for a Loss and an Arrival of the service.
    std::shared_ptr<Application const> application;
    std::string service; ///< bus name of the service in the message
    bool isFromService =
        false; ///< a notification, or a call that checks that the application reads its messages
    bool isOnHelperBus = false; ///< an Announcement, its Answer, or the Error instead of an Answer

    std::string endpoint;
    std::string function; ///< empty on the helper bus, and if unknown
    std::uint32_t serial = 0;
    std::uint32_t handle = 0;
    std::vector<Value> values; ///< without function, handle and result

    std::uint64_t request = 0; ///< number of the answered message, 0 if it was not recorded
    std::optional<bool> result;
    std::optional<std::int64_t> latency; ///< since the request, in microseconds

    // Of a notification:
    std::optional<std::int64_t> pid;
    std::optional<std::int64_t> pts; ///< in units of 1/90000 s
    std::optional<std::size_t> size; ///< size of the data, in bytes

    std::string errorName; ///< name of an Error
    std::string errorText;
    Problems problems; ///< what is wrong with the message
};

/// The word for the kind: that of the Wireshark dissector, such as "request", or "loss" or "arrival".
char const* NameOf(EventKind kind);

/// The event as a JSON object. docs/how-to/trace-the-bus.md describes the members.
Json::Value ToJson(Event const& event);

} // namespace zviptv::trace
