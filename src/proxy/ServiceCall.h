// SPDX-License-Identifier: MIT
#pragma once

#include "log/Log.h"
#include "proxy/Session.h"

#include <zviptv/IPTVTypes.h>
#include <zviptv/MessageBuffer.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>

namespace zviptv {

/// One argument of a request: numbers as decimal text, texts as they are. A null text is left out.
class RequestField
{
public:
    RequestField(char const* key, char const* text)
        : m_key(key), m_isPresent(text != nullptr), m_value(text == nullptr ? "" : text)
    {
    }
    RequestField(char const* key, std::string const& text) : RequestField(key, text.c_str()) {}
    template <typename Number,
              typename = std::enable_if_t<std::is_arithmetic_v<Number> || std::is_enum_v<Number>>>
    RequestField(char const* key, Number number) : m_key(key), m_isPresent(true), m_value(ToText(number))
    {
    }

    void AddTo(CMessageBuffer& request) const
    {
        if (m_isPresent) {
            request.AddValue(m_key, m_value.c_str());
        }
    }

private:
    template <typename Number>
    static std::string ToText(Number number)
    {
        if constexpr (std::is_enum_v<Number>) {
            return std::to_string(static_cast<int>(number));
        } else {
            return std::to_string(number);
        }
    }

    char const* m_key;
    bool m_isPresent;
    std::string m_value;
};

/// One out-parameter of a reply: where the value under a key goes, decoded as the parameter's type asks.
/// Numbers throw what the standard conversions throw; a record takes its bytes and is filled up with zeros.
class ReplyField
{
public:
    ReplyField(char const* key, int& number);
    ReplyField(char const* key, unsigned int& number);
    ReplyField(char const* key, unsigned long& number);
    ReplyField(char const* key, unsigned long long& number);
    ReplyField(char const* key, bool& flag);
    ReplyField(char const* key, char& character);
    ReplyField(char const* key, std::string& text);

    template <typename Enumeration, std::enable_if_t<std::is_enum_v<Enumeration>, int> = 0>
    ReplyField(char const* key, Enumeration& enumeration)
        : ReplyField(key, &enumeration, [](std::string& value, void* target, std::size_t) {
              *static_cast<Enumeration*>(target) = static_cast<Enumeration>(std::stoi(value));
          })
    {
    }

    template <typename Record, std::enable_if_t<std::is_class_v<Record>, int> = 0>
    ReplyField(char const* key, Record& record) : ReplyField(key, &record, CopyRecord, sizeof(Record))
    {
        static_assert(std::is_trivially_copyable_v<Record>);
    }

    char const* Key() const { return m_key; }

    /// Decodes `value`, which may be used up, into the out-parameter.
    void Decode(std::string& value) const { m_decode(value, m_target, m_size); }

private:
    using Decoder = void (*)(std::string& value, void* target, std::size_t size);

    ReplyField(char const* key, void* target, Decoder decode, std::size_t size = 0)
        : m_key(key), m_target(target), m_decode(decode), m_size(size)
    {
    }

    static void CopyRecord(std::string& value, void* target, std::size_t size);

    char const* m_key;
    void* m_target;
    Decoder m_decode;
    std::size_t m_size;
};

using RequestFields = std::initializer_list<RequestField>;
using ReplyFields = std::initializer_list<ReplyField>;

/// What became of a call.
enum class CallOutcome
{
    NotSent, ///< the exchange failed
    Refused, ///< the service answered with the result 0
    Accepted ///< the service answered with another result
};

/// Whether a request has the key "handleID", where the session has a handle.
enum class HandleID
{
    Sent,
    LeftOut
};

/// The one path of every proxy method to the service: request ("functionname", "handleID", the fields in
/// order), synchronous exchange. False, and a log line, when the exchange failed or there is no session.
bool Exchange(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
              CMessageBuffer& reply, SourceLocation const& where, HandleID handleID = HandleID::Sent);

/// An entry line, and an exchange whose reply carries a result and, whatever the result, the values of
/// `outputs`.
CallOutcome Call(std::shared_ptr<Session> const& session, char const* functionName, RequestFields fields,
                 ReplyFields outputs, SourceLocation const& where, HandleID handleID = HandleID::Sent);

/// Logs why a call on an object without session is refused. False, as the call returns.
bool RefuseWithoutSession(SourceLocation const& where);

} // namespace zviptv
