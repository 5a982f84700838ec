// SPDX-License-Identifier: MIT
#include "client/message/Reply.h"

#include "client/guide/ProgrammeJson.h"
#include "client/message/Text.h"

#include <zviptv/Protocol.h>

#include <stdexcept>

namespace zviptv::client {

void Reply::SetMalformed(char const* key, std::string_view expected)
{
    std::string_view const got = m_message.GetView(key);
    m_failure = Failure{FailureKind::MalformedReply, m_function, key, "",
                        std::string(key) + " is malformed: expected " + std::string(expected) + ", got " +
                            (got.empty() ? "nothing" : Shown(got))};
}

void Reply::CheckResult()
{
    if (ReadInt32(protocol::key::Result) == 0 && !m_failure) {
        m_failure = Failure{FailureKind::Refused, m_function, "", "",
                            "the service refused: it answered with the result 0"};
    }
}

// Numbers are read as the protocol says: blanks and a sign first, then digits up to the first other byte.
std::int32_t Reply::ReadInt32(char const* key)
{
    if (m_failure) {
        return 0;
    }
    try {
        return std::stoi(std::string(m_message.GetView(key)));
    } catch (std::logic_error const&) {
        SetMalformed(key, "a signed 32-bit decimal number");
        return 0;
    }
}

std::uint64_t Reply::ReadUInt64(char const* key)
{
    if (m_failure) {
        return 0;
    }
    try {
        return std::stoull(std::string(m_message.GetView(key)));
    } catch (std::logic_error const&) {
        SetMalformed(key, "an unsigned 64-bit decimal number");
        return 0;
    }
}

void Reply::Read(char const* key, char& character)
{
    std::string_view const text = m_message.GetView(key);
    if (!text.empty()) {
        character = text.front();
    } else if (!m_failure) {
        SetMalformed(key, "a character");
    }
}

void Reply::Read(char const* key, std::chrono::milliseconds& time)
{
    std::uint64_t const number = ReadUInt64(key);
    if (number > static_cast<std::uint64_t>(std::chrono::milliseconds::max().count())) {
        SetMalformed(key, "a number of milliseconds below 2^63");
        return;
    }
    time = std::chrono::milliseconds(number);
}

template <class Value>
void Reply::ReadJson(char const* key, Value& value, char const* expected)
{
    if (!m_failure && !FromJson(m_message.GetView(key), value)) {
        SetMalformed(key, expected);
    }
}

void Reply::Read(char const* key, std::optional<Programme>& programme)
{
    ReadJson(key, programme, "a programme as JSON");
}

void Reply::Read(char const* key, std::optional<ProgrammeRating>& rating)
{
    ReadJson(key, rating, "a rating as JSON");
}

void Reply::Read(char const* key, std::vector<std::string>& texts)
{
    ReadJson(key, texts, "a JSON array of texts");
}

void Reply::Read(char const* key, std::vector<Programme>& programmes)
{
    ReadJson(key, programmes, "a JSON array of programmes");
}

} // namespace zviptv::client
