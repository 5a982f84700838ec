// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/MessageBuffer.h>
#include <zviptv/Protocol.h>

#include <charconv>
#include <optional>
#include <string>
#include <type_traits>

namespace zviptv::sim {

/// Reads the arguments of a request of the application `busName`.
class Request
{
public:
    Request(CMessageBuffer const& message, std::string const& busName)
        : m_message(message), m_busName(busName)
    {
    }

    std::string const& Sender() const { return m_busName; }
    std::string Function() const { return m_message.GetValue(protocol::key::FunctionName); }
    std::string Text(char const* key) const { return m_message.GetValue(key); }

    /// Returns nullopt if the argument is missing or not a decimal number of this type.
    template <typename Number>
    std::optional<Number> Get(char const* key) const
    {
        std::string const text = Text(key);
        Number number{};
        auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
        bool const whole = failure == std::errc() && end == text.data() + text.size();
        return whole ? std::optional<Number>(number) : std::nullopt;
    }

    /// Returns nullopt if the argument is missing or not a number.
    std::optional<bool> Flag(char const* key) const
    {
        std::optional<int> const number = Get<int>(key);
        return number ? std::optional<bool>(*number != 0) : std::nullopt;
    }

private:
    CMessageBuffer const& m_message;
    std::string const& m_busName;
};

/// Builds a reply, the result first.
class Reply
{
public:
    explicit Reply(bool result) { m_message.SetResult(result ? 1 : 0); }

    template <typename Number, typename = std::enable_if_t<std::is_arithmetic_v<Number>>>
    Reply& Add(char const* key, Number number)
    {
        m_message.AddValue(key, std::to_string(number).c_str());
        return *this;
    }

    Reply& Add(char const* key, std::string const& text)
    {
        m_message.AddValue(key, static_cast<int>(text.size()), text.data());
        return *this;
    }

    template <typename Record>
    Reply& AddRecord(char const* key, Record const& record)
    {
        static_assert(std::is_trivially_copyable_v<Record>);
        m_message.AddValue(key, static_cast<int>(sizeof(Record)), reinterpret_cast<char const*>(&record));
        return *this;
    }

    operator CMessageBuffer() const { return m_message; }

private:
    CMessageBuffer m_message;
};

} // namespace zviptv::sim
