// SPDX-License-Identifier: MIT
#include "Conversation.h"

#include "Entries.h"

#include <zviptv/Protocol.h>

#include <utility>

namespace zviptv::trace {

namespace {

constexpr std::string_view Bus = "org.freedesktop.DBus";

std::string ValueOf(Event const& event, std::string_view key)
{
    for (Value const& value : event.values) {
        if (value.key == key && value.json.isString()) {
            return value.json.asString();
        }
    }
    return {};
}

std::string EndpointOf(std::string_view path)
{
    std::string const& folder = Schema::Get().channelPath;
    return path.substr(0, folder.size()) == folder ? std::string(path.substr(folder.size())) : std::string();
}

} // namespace

std::optional<Event> Conversation::Add(Message const& message)
{
    ++m_counts.messages;
    m_time = message.time;
    std::optional<Event> event;
    try {
        event = Take(ParseMessage(message.bytes));
    } catch (Malformed const& problem) {
        if (++m_counts.malformed == 1) {
            m_counts.firstMalformed = "message " + std::to_string(m_counts.messages) + ": " + problem.what();
        }
        return std::nullopt;
    }
    m_counts.forgotten = m_exchanges.Forgotten();
    if (!event) {
        ++m_counts.foreign;
    }
    return event;
}

void Conversation::SetProcess(std::string const& busName, int processId, std::string const& program)
{
    m_participants.Change(busName, [&](Application& application) {
        application.processId = processId;
        application.program = program;
    });
}

std::optional<Event> Conversation::Take(ParsedMessage const& message)
{
    switch (message.type) {
    case ParsedMessage::Type::Call:
        return TakeCall(message);
    case ParsedMessage::Type::Reply:
    case ParsedMessage::Type::Error:
        return TakeReply(message);
    case ParsedMessage::Type::Signal:
        return TakeSignal(message);
    }
    return std::nullopt;
}

Event Conversation::MakeEvent(EventKind kind, ParsedMessage const& message) const
{
    Event event;
    event.kind = kind;
    event.number = m_counts.messages;
    event.time = m_time;
    event.serial = message.serial;
    return event;
}

std::optional<Event> Conversation::TakeCall(ParsedMessage const& message)
{
    Schema const& schema = Schema::Get();
    if (message.interface == schema.helperInterface && message.member == schema.helperMember) {
        return Announce(message);
    }
    if (message.interface == schema.channelInterface &&
        (message.member == schema.requestMember || message.member == schema.notificationMember)) {
        return Request(message);
    }
    if (message.destination == Bus) {
        TakeProcessQuestion(message);
    }
    return std::nullopt;
}

Event Conversation::Announce(ParsedMessage const& message)
{
    std::string const sender(message.sender);
    Event event = MakeEvent(EventKind::Announcement, message);
    m_participants.See(sender);
    AddPairs(event, message);
    event.service = message.destination;
    event.isOnHelperBus = true;
    event.endpoint = ValueOf(event, protocol::key::Type);
    bool const joins = ValueOf(event, protocol::key::Add) == "y";
    m_participants.Change(sender, [&](Application& application) {
        if (joins) {
            application.channels.insert(event.endpoint);
        } else {
            application.channels.erase(event.endpoint);
        }
    });
    event.application = m_participants.See(sender);
    Expect(message, event);
    return event;
}

Event Conversation::Request(ParsedMessage const& message)
{
    std::string const sender(message.sender);
    std::string const destination(message.destination);
    Event event = MakeEvent(EventKind::Request, message);
    event.endpoint = EndpointOf(message.path);
    AddEntries(event, message);
    event.isFromService = event.function.empty() && event.values.empty() &&
                          (m_participants.IsService(sender) || m_participants.Find(destination) != nullptr);
    if (event.isFromService) {
        m_participants.SeeService(sender);
    } else {
        m_participants.SeeService(destination);
        m_participants.See(sender);
    }
    if (event.function == protocol::function::SetAppID) {
        m_participants.Change(sender, [&](Application& application) {
            application.name = ValueOf(event, protocol::key::AppID);
        });
    }
    event.service = event.isFromService ? sender : destination;
    event.application = m_participants.See(event.isFromService ? destination : sender);
    Expect(message, event);
    return event;
}

void Conversation::Expect(ParsedMessage const& message, Event const& event)
{
    if (message.wantsReply) {
        bool const isRequest = event.kind == EventKind::Request;
        m_exchanges.Add(message.sender, message.serial,
                        {isRequest ? Exchange::Kind::Request : Exchange::Kind::Announcement,
                         event.number,
                         event.time,
                         std::string(message.destination),
                         event.endpoint,
                         event.function,
                         {},
                         event.isFromService});
    }
}

std::optional<Event> Conversation::TakeReply(ParsedMessage const& message)
{
    auto const exchange = m_exchanges.Take(message.destination, message.replySerial);
    if (!exchange) {
        bool const isOurs = message.type == ParsedMessage::Type::Reply && message.signature == "a{sv}" &&
                            message.body.find(protocol::key::Result) != std::string_view::npos;
        return isOurs ? std::optional(AnswerUnasked(message)) : std::nullopt;
    }
    if (exchange->kind == Exchange::Kind::ProcessQuestion) {
        TakeProcess(exchange->subject, message);
        return std::nullopt;
    }
    return Answer(message, *exchange);
}

Event Conversation::Answer(ParsedMessage const& message, Exchange const& exchange)
{
    bool const isRequest = exchange.kind == Exchange::Kind::Request;
    Event event = MakeEvent(isRequest ? EventKind::Reply : EventKind::Answer, message);
    event.request = exchange.number;
    event.latency = m_time - exchange.time;
    event.endpoint = exchange.endpoint;
    event.function = exchange.function;
    event.isFromService = !exchange.isFromService;
    event.isOnHelperBus = !isRequest;
    std::string const caller(message.destination);
    event.application = m_participants.See(exchange.isFromService ? std::string(exchange.callee) : caller);
    event.service = exchange.isFromService ? caller : exchange.callee;
    if (message.type == ParsedMessage::Type::Error) {
        event.kind = EventKind::Error;
        event.errorName = message.errorName;
        auto const texts = ReadTexts(message);
        event.errorText = texts.empty() ? std::string_view() : texts.front();
        return event;
    }
    if (isRequest) {
        AddEntries(event, message);
        return event;
    }
    AddPairs(event, message);
    m_participants.SeeService(std::string(message.sender));
    event.service = message.sender;
    return event;
}

/// For a reply whose request is not in the recording.
Event Conversation::AnswerUnasked(ParsedMessage const& message)
{
    ++m_counts.unasked;
    Event event = MakeEvent(EventKind::Reply, message);
    AddEntries(event, message);
    event.problems.emplace_back("its request was not recorded");
    event.isFromService = true;
    event.service = message.sender;
    event.application = m_participants.See(std::string(message.destination));
    return event;
}

std::optional<Event> Conversation::TakeSignal(ParsedMessage const& message)
{
    Schema const& schema = Schema::Get();
    if (message.interface == schema.channelInterface && message.member == schema.notificationMember) {
        return Notify(message);
    }
    bool const isOwnerChange =
        message.sender == Bus && message.interface == Bus && message.member == "NameOwnerChanged";
    return isOwnerChange ? TakeOwnerChange(message) : std::nullopt;
}

Event Conversation::Notify(ParsedMessage const& message)
{
    Event event = MakeEvent(EventKind::Notification, message);
    event.isFromService = true;
    event.service = message.sender;
    event.endpoint = EndpointOf(message.path);
    AddEntries(event, message);
    m_participants.SeeService(event.service);
    event.application = m_participants.See(std::string(message.destination));
    if (message.destination.empty()) {
        event.problems.emplace_back("no destination: every application with this endpoint receives it");
    }
    return event;
}

std::optional<Event> Conversation::TakeOwnerChange(ParsedMessage const& message)
{
    auto const texts = ReadTexts(message);
    if (texts.size() != 3) {
        return std::nullopt;
    }
    std::string const name(texts[0]);
    std::string const former(texts[1]);
    std::string const owner(texts[2]);
    bool const isLoss = owner.empty();
    Event event = MakeEvent(isLoss ? EventKind::Loss : EventKind::Arrival, message);
    if (name == Schema::Get().helperName) {
        m_participants.ForgetService(former);
        if (!isLoss) {
            m_participants.SeeService(owner);
        }
        event.service = isLoss ? former : owner;
        event.isFromService = true;
        return event;
    }
    event.application = isLoss ? m_participants.Find(name) : nullptr;
    m_participants.Forget(name);
    m_participants.ForgetService(name);
    return event.application != nullptr ? std::optional(std::move(event)) : std::nullopt;
}

void Conversation::TakeProcessQuestion(ParsedMessage const& message)
{
    if (message.member == "GetConnectionUnixProcessID" && message.signature == "s" && message.wantsReply) {
        Exchange question;
        question.kind = Exchange::Kind::ProcessQuestion;
        question.subject = ReadTexts(message).front();
        m_exchanges.Add(message.sender, message.serial, std::move(question));
    }
}

void Conversation::TakeProcess(std::string const& busName, ParsedMessage const& message)
{
    if (message.type == ParsedMessage::Type::Reply && message.signature == "u") {
        auto const id = static_cast<int>(message.Body().Number());
        std::string const program = m_programOf ? m_programOf(id) : std::string();
        m_participants.Change(busName, [&](Application& application) {
            application.processId = id;
            application.program = program.empty() ? application.program : program;
        });
    }
}

} // namespace zviptv::trace
