// SPDX-License-Identifier: MIT
#pragma once

#include "CaptureBytes.h"
#include "Fuzz.h"

#include <map>

namespace zviptv::fuzz {

struct Function
{
    char const* endpoint;
    char const* name;
    char const* argument;
};

inline constexpr Function Functions[] = {{"BROADCASTDATA", "GetAudio", "index"},
                                         {"IPTVDATASUBSCRIBER", "requestPESCB", "on"},
                                         {"IPTVDATASUBSCRIBER", "requestCaptionCB", "on"},
                                         {"BROADCASTDATA", "SizeOfTTX", ""},
                                         {"PLAYERCONTROL", "SetAppID", "AppID"},
                                         {"IPGUTIL", "GetProgram", "key"},
                                         {"PLAYERCONTROL", "NoSuchFunction", "x"},
                                         {"PLAYERCONTROL", "", ""},
                                         {"", "GetAudio", "index"}};

/// One step of the session, five bytes of the input.
struct Step
{
    std::uint8_t kind;
    std::uint8_t application;
    std::uint8_t what;
    std::uint8_t value;
    std::uint8_t time;
};

Function const& FunctionOf(Step const& step);
std::string ValueOf(std::uint8_t value);
std::string NameOf(std::uint8_t number);
BusMessage::Pairs EntriesOf(Function const& function, std::string const& handle, std::string const& value);

/// Writes the session, and stores the expected answers of a replay.
class Session
{
public:
    explicit Session(FuzzedDataProvider& input)
    {
        while (input.remaining_bytes() >= sizeof(Step)) {
            auto const bytes = input.ConsumeBytes<std::uint8_t>(sizeof(Step));
            Add({bytes[0], bytes[1], bytes[2], bytes[3], bytes[4]});
        }
        m_tail = input.ConsumeRemainingBytesAsString();
    }

    std::string Bytes() const { return m_capture.Bytes() + m_tail; }
    std::vector<Step> const& Asked() const { return m_asked; }

    /// The answers in turn, by the number of the function and the value. Null unless all steps are exchanges.
    using Expected = std::map<std::pair<std::size_t, std::uint8_t>, std::vector<std::string>>;
    Expected const* Answers() const { return m_isPlain ? &m_answers : nullptr; }

private:
    void Add(Step const& step);
    void Ask(Step const& step);
    void Answer(Step const& step);
    void Announce(Step const& step);
    void Damage(Step const& step);
    void Push(Step const& step);
    void Change(Step const& step);
    void Write(BusMessage message)
    {
        message.serial = ++m_serial;
        m_capture.Add(m_time, message.Bytes());
    }

    static BusMessage Between(std::string sender, std::string destination, std::uint8_t type)
    {
        BusMessage message;
        message.type = type;
        message.sender = std::move(sender);
        message.destination = std::move(destination);
        return message;
    }

    struct OpenCall
    {
        std::uint32_t serial;
        std::string application;
        bool announces;
    };

    CaptureBytes m_capture;
    std::string m_tail;
    std::int64_t m_time = 1'700'000'000'000'000;
    std::uint32_t m_serial = 0;
    std::vector<Step> m_asked;
    std::vector<OpenCall> m_open;
    bool m_isPlain = true;
    Expected m_answers;
};

} // namespace zviptv::fuzz
