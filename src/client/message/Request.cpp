// SPDX-License-Identifier: MIT
#include "client/message/Request.h"

#include "client/guide/ProgrammeJson.h"

#include <zviptv/Protocol.h>

#include <limits>

namespace zviptv::client {

Request::Request(EndpointId endpoint, char const* function, std::optional<std::uint32_t> handleNumber)
    : m_endpoint(endpoint), m_function(function)
{
    m_message.AddValue(protocol::key::FunctionName, function);
    if (handleNumber) {
        Add(protocol::key::HandleID, *handleNumber);
    }
}

void Request::AddText(char const* key, std::string const& text)
{
    m_message.AddValue(key, static_cast<int>(text.size()), text.data());
}

void Request::Refuse(char const* key, char const* why)
{
    if (!m_refusal) {
        m_refusal = Failure{FailureKind::InvalidArgument, m_function, key, "", std::string(key) + why};
    }
}

void Request::Add(char const* key, std::string const& text)
{
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        Refuse(key, " is too long: give a text of less than 2 GiB");
    } else if (text.find('\0') != std::string::npos) {
        Refuse(key, " contains a zero byte; remove it");
    } else {
        AddText(key, text);
    }
}

void Request::AddSeconds(char const* key, std::int64_t seconds)
{
    if (seconds < 0 || seconds > std::numeric_limits<std::uint32_t>::max()) {
        Refuse(key, " is out of range: the protocol counts seconds from 0 to 4294967295");
    } else {
        Add(key, static_cast<std::uint32_t>(seconds));
    }
}

void Request::Add(char const* key, std::chrono::system_clock::time_point time)
{
    AddSeconds(key, std::chrono::floor<std::chrono::seconds>(time.time_since_epoch()).count());
}

void Request::Add(char const* key, std::chrono::seconds duration)
{
    AddSeconds(key, duration.count());
}

void Request::Add(char const* key, ProgrammeId const& programme)
{
    if (std::optional<std::string> const json = ToJson(programme)) {
        AddText(key, *json);
    } else {
        Refuse(key, " names a start or a duration that is out of range: use times from 1970 to 2106");
    }
}

} // namespace zviptv::client
