// SPDX-License-Identifier: MIT
#pragma once

#include "Event.h"
#include "Exchanges.h"
#include "Message.h"
#include "ParsedMessage.h"
#include "Participants.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace zviptv::trace {

/// Numbers of messages that a Conversation has taken.
struct Counts
{
    std::uint64_t messages = 0;
    std::uint64_t foreign = 0;   ///< messages of other protocols
    std::uint64_t malformed = 0; ///< malformed messages
    std::uint64_t unasked = 0;   ///< replies without a known request
    std::uint64_t forgotten = 0; ///< requests that were dropped because too many others followed
    std::string firstMalformed;  ///< "message 3: it does not begin with a byte order"
};

/// Turns the messages of a bus, in their order, into events of the protocol. Its memory is bounded. It may
/// begin in the middle of a conversation. Not thread-safe.
class Conversation
{
public:
    /// `onApplication` is called with the bus name of each application before its first event; it may ask the
    /// bus for its process. `programOf` returns the name of a process by its id. Both may be empty.
    explicit Conversation(std::function<void(std::string const& busName)> onApplication = {},
                          std::function<std::string(int processId)> programOf = {})
        : m_participants(std::move(onApplication)), m_programOf(std::move(programOf))
    {
    }

    /// The event of a message; empty for a message of another protocol, which is counted.
    std::optional<Event> Add(Message const& message);

    /// Sets the process of an application. Process ids are also taken from the answers of the bus
    /// among the messages.
    void SetProcess(std::string const& busName, int processId, std::string const& program);

    Counts const& Count() const { return m_counts; }

private:
    std::optional<Event> Take(ParsedMessage const& message);
    std::optional<Event> TakeCall(ParsedMessage const& message);
    std::optional<Event> TakeReply(ParsedMessage const& message);
    std::optional<Event> TakeSignal(ParsedMessage const& message);

    std::optional<Event> TakeOwnerChange(ParsedMessage const& message);
    void TakeProcessQuestion(ParsedMessage const& message);
    void TakeProcess(std::string const& busName, ParsedMessage const& message);

    Event MakeEvent(EventKind kind, ParsedMessage const& message) const;
    Event Announce(ParsedMessage const& message);
    Event Request(ParsedMessage const& message);
    Event Notify(ParsedMessage const& message);
    Event Answer(ParsedMessage const& message, Exchange const& exchange);
    Event AnswerUnasked(ParsedMessage const& message);
    void Expect(ParsedMessage const& message, Event const& event);

    Participants m_participants;
    std::function<std::string(int processId)> m_programOf;
    Exchanges m_exchanges;
    Counts m_counts;
    std::int64_t m_time = 0; ///< time of the current message
};

} // namespace zviptv::trace
