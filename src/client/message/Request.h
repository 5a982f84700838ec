// SPDX-License-Identifier: MIT
#pragma once

#include "client/message/Endpoint.h"

#include <zviptv/MessageBuffer.h>
#include <zviptv/client/Failure.h>
#include <zviptv/client/Programme.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

namespace zviptv::client {

/// A request to the service: function, handle, then the arguments in their order.
class Request
{
public:
    /// `handle` is empty for a request without a handle.
    Request(EndpointId endpoint, char const* function, std::optional<std::uint32_t> handleNumber);

    template <class Value>
    void Add(char const* key, Value value)
    {
        if constexpr (std::is_enum_v<Value>) {
            AddText(key, std::to_string(static_cast<std::int32_t>(value)));
        } else {
            static_assert(std::is_integral_v<Value>);
            AddText(key, std::to_string(value));
        }
    }
    void Add(char const* key, std::string const& text);
    void Add(char const* key, std::chrono::system_clock::time_point time);
    void Add(char const* key, std::chrono::seconds duration);
    void Add(char const* key, ProgrammeId const& programme);

    EndpointId Endpoint() const { return m_endpoint; }
    char const* Function() const { return m_function; }
    CMessageBuffer& Message() { return m_message; }
    /// The reason why it cannot be sent, if an argument is wrong.
    std::optional<Failure> const& Refusal() const { return m_refusal; }

private:
    void AddText(char const* key, std::string const& text);
    void Refuse(char const* key, char const* why);
    void AddSeconds(char const* key, std::int64_t seconds);

    EndpointId m_endpoint;
    char const* m_function;
    CMessageBuffer m_message;
    std::optional<Failure> m_refusal;
};

} // namespace zviptv::client
