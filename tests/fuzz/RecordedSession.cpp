// SPDX-License-Identifier: MIT
#include "RecordedSession.h"

#include <algorithm>

namespace zviptv::fuzz {

namespace {

constexpr char Channel[] = "org.corvel.zviptvapi.DbusCommunication";
constexpr char Helper[] = "org.corvel.zviptvapi.dbushelper";
constexpr char Bus[] = "org.freedesktop.DBus";

constexpr std::int64_t Second = 1'000'000;
constexpr std::int64_t Day = 86'400 * Second;

/// Between a message and the next one, in microseconds: clocks are set, too.
constexpr std::int64_t Steps[] = {
    0,        1000,         50'000,        Second, 5 * Second / 2, -Second, 3600 * Second, -2 * Day,
    40 * Day, 20'000 * Day, -20'000 * Day, 7};

} // namespace

Function const& FunctionOf(Step const& step)
{
    return Functions[step.what % std::size(Functions)];
}

std::string ValueOf(std::uint8_t value)
{
    return value < 128 ? std::to_string(value) : std::string(value - 128U, static_cast<char>(value));
}

std::string NameOf(std::uint8_t number)
{
    return ":1." + std::to_string(number % 4);
}

BusMessage::Pairs EntriesOf(Function const& function, std::string const& handle, std::string const& value)
{
    return {{"functionname", function.name}, {"handleID", handle}, {function.argument, value}};
}

void Session::Add(Step const& step)
{
    m_time = std::clamp<std::int64_t>(m_time + Steps[step.time % std::size(Steps)], 0, 0xFFFFFFFF * Second);
    m_isPlain = m_isPlain && step.kind % 8 == 0;
    switch (step.kind % 8) {
    case 0: // an exchange
        Ask(step);
        Answer(step);
        break;
    case 1:
        Ask(step);
        break;
    case 2:
        Answer(step);
        break;
    case 3:
        Push(step);
        break;
    case 4:
        Change(step);
        break;
    case 5:
        Announce(step);
        break;
    case 6: // cut off, or anything
        m_capture.Add(m_time, std::string(step.value, static_cast<char>(step.what)));
        break;
    default:
        Damage(step);
        break;
    }
}

void Session::Announce(Step const& step)
{
    BusMessage message = Between(NameOf(step.application), Helper, 1);
    message.path = "/org/corvel/zviptvapi/dbushelper";
    message.interface = Helper;
    message.member = "SendSignal";
    message.signature = "a(ss)";
    message.entries = {{"dbusname", message.sender},
                       {"type", FunctionOf(step).endpoint},
                       {"add", step.value % 2 == 0 ? "y" : "n"}};
    Write(std::move(message));
    m_open.push_back({m_serial, NameOf(step.application), true});
}

void Session::Damage(Step const& step)
{
    BusMessage message = Between(NameOf(step.application), NameOf(0), step.what);
    message.interface = Channel;
    message.member = "Send";
    message.signature = "a{sv}";
    message.entries = {{"functionname", "GetAudio"}, {"k", ValueOf(step.value)}};
    std::string bytes = message.Bytes();
    bytes[step.value % bytes.size()] = static_cast<char>(step.what);
    m_capture.Add(m_time, bytes);
}

void Session::Ask(Step const& step)
{
    Function const& function = FunctionOf(step);
    BusMessage message = Between(NameOf(step.application | 1U), NameOf(0), 1);
    message.path = std::string("/org/corvel/zviptvapi/DbusCommunication/") + function.endpoint;
    message.interface = Channel;
    message.member = "Send";
    message.signature = "a{sv}";
    message.entries = EntriesOf(function, "256", ValueOf(step.value));
    Write(std::move(message));
    m_open.push_back({m_serial, NameOf(step.application | 1U), false});
    m_asked.push_back(step);
}

/// The latest request, or with another kind of step one of the open ones.
void Session::Answer(Step const& step)
{
    if (m_open.empty()) {
        return;
    }
    std::size_t const index = step.kind % 8 == 0 ? m_open.size() - 1 : step.application % m_open.size();
    OpenCall const call = m_open[index];
    m_open.erase(m_open.begin() + static_cast<std::ptrdiff_t>(index));
    BusMessage message = Between(NameOf(0), call.application, 2);
    message.replySerial = call.serial;
    message.signature = call.announces ? "a(ss)" : "a{sv}";
    message.entries = {{call.announces ? "dbusname" : "result_internal", call.announces ? ":1.0" : "1"},
                       {"number", std::to_string(m_serial)}};
    if (step.kind % 8 == 0) {
        m_answers[{step.what % std::size(Functions), step.value}].push_back(std::to_string(m_serial));
    } else if (step.what % 8 < 3) {
        message.type = 3;
        message.sender = step.what % 2 == 0 ? Bus : NameOf(0);
        message.errorName = step.what % 3 == 0 ? "org.freedesktop.DBus.Error.NoReply" : ValueOf(step.value);
        message.signature = "s";
    } else if (step.what % 8 < 5) {
        message.entries.front().second = ValueOf(step.value);
        message.signature = step.what % 2 == 0 ? "s" : "a{sv}";
    }
    Write(std::move(message));
}

void Session::Push(Step const& step)
{
    BusMessage message = Between(NameOf(0), NameOf(step.application), 4);
    message.path = "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER";
    message.interface = Channel;
    message.member = "SendSignal";
    message.signature = "a{sv}";
    message.entries = {{"functionname", step.what % 2 == 0 ? "PESCB" : "CaptionCB"},
                       {"PESDataSize", ValueOf(step.value)}};
    Write(std::move(message));
}

void Session::Change(Step const& step)
{
    BusMessage message = Between(Bus, {}, 4);
    message.path = "/org/freedesktop/DBus";
    message.interface = Bus;
    message.member = "NameOwnerChanged";
    message.signature = "sss";
    std::string const name = step.what % 3 == 0 ? NameOf(step.application) : Helper;
    message.entries = {{name, {}},
                       {step.value % 2 == 0 ? NameOf(step.application) : "", {}},
                       {step.value % 3 == 0 ? NameOf(0) : "", {}}};
    Write(std::move(message));
}

} // namespace zviptv::fuzz
